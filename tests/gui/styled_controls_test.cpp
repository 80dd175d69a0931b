// Buttons, labels, lines and check boxes: what they draw in each status, and what they do with clicks.
#include "gui/StyledTools.h"

#include <StyledCtl/ORBCustomCheckBox.h>
#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomLineWidget.h>
#include <StyledCtl/ORBCustomPushButton.h>

#include <QAccessible>
#include <QButtonGroup>
#include <QTemporaryDir>

using ORBCustom::StatusDisabled;
using ORBCustom::StatusHover;
using ORBCustom::StatusNormal;
using ORBCustom::StatusPressed;

namespace
{

const QColor kNormal("#112233"), kHover("#223344"), kPressed("#334455"), kDisabled("#445566");

QImage shot(QWidget& widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

QColor inside(QWidget& widget)
{
    return shot(widget).pixelColor(4, 4);
}

void point(QWidget& widget, bool over)
{
    widget.setAttribute(Qt::WA_UnderMouse, over);
    QEvent event(over ? QEvent::Enter : QEvent::Leave);
    QApplication::sendEvent(&widget, &event);
}

bool draws(const QImage& image, const QColor& color)
{
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelColor(x, y) == color)
                return true;
    return false;
}

// A picture file of one colour.
QString picture(const QTemporaryDir& folder, const QColor& color)
{
    const QString path = folder.filePath(color.name().mid(1) + ".png");
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(color);
    image.save(path);
    return path;
}

} // namespace

class StyledControlsTest : public QObject
{
    Q_OBJECT

private slots:
    void eachStatusHasItsColours()
    {
        ORBCustomPushButton button;
        button.resize(60, 26);
        button.cSetBackgroundColor(kNormal);
        button.cSetBackgroundColor(kHover, StatusHover);
        button.cSetBackgroundColor(kPressed, StatusPressed);
        button.cSetBackgroundColor(kDisabled, StatusDisabled);
        QCOMPARE(inside(button), kNormal);
        point(button, true);
        QCOMPARE(inside(button), kHover);
        button.setDown(true);
        QCOMPARE(inside(button), kPressed);
        button.setEnabled(false);
        QCOMPARE(inside(button), kDisabled);
        button.setEnabled(true);
        button.setDown(false);
        point(button, false);
        QCOMPARE(inside(button), kNormal);
    }

    void labelsHaveStatusesToo()
    {
        ORBCustomLabel label;
        label.resize(60, 26);
        label.cSetBackgroundColor(kNormal);
        label.cSetBackgroundColor(kHover, StatusHover);
        label.cSetBackgroundColor(kPressed, StatusPressed);
        point(label, true);
        QCOMPARE(inside(label), kHover);
        QTest::mousePress(&label, Qt::LeftButton);
        QCOMPARE(inside(label), kPressed);
        QTest::mouseRelease(&label, Qt::LeftButton);
        QCOMPARE(inside(label), kHover);
        point(label, false);
        QCOMPARE(inside(label), kNormal);
    }

    void aStatusThatWasNotSetLooksNormal()
    {
        ORBCustomPushButton button;
        button.resize(60, 26);
        QVERIFY(!button.cBackgroundColor().isValid());
        button.cSetBackgroundColor(kNormal);
        point(button, true);
        QCOMPARE(inside(button), kNormal);
        QCOMPARE(button.cBackgroundColor(StatusHover), kNormal);
        point(button, false);
        button.setEnabled(false);
        QVERIFY(inside(button) != kNormal); // the same, but fainter
        QCOMPARE(button.cBackgroundColor(StatusDisabled), kNormal);
    }

    void anUnknownStatusCountsAsNormal()
    {
        ORBCustomLabel label;
        label.cSetFontColor(kHover, 17);
        QCOMPARE(label.cFontColor(), kHover);
        label.cSetFontColor(kNormal, -1);
        QCOMPARE(label.cFontColor(), kNormal);
    }

    void bordersLieOnTheirEdges_data()
    {
        QTest::addColumn<int>("edges");
        QTest::addColumn<QString>("drawn"); // of left, right, top, bottom
        QTest::newRow("none") << int(ORBCustom::BorderNone) << "";
        QTest::newRow("bottom") << int(ORBCustom::BorderBottom) << "bottom";
        QTest::newRow("top and bottom") << int(ORBCustom::BorderTopAndBottom) << "top bottom";
        QTest::newRow("all") << int(ORBCustom::BorderAll) << "left right top bottom";
        QTest::newRow("all, rounded") << int(ORBCustom::BorderAllRounded) << "left right top bottom";
    }

    void bordersLieOnTheirEdges()
    {
        QFETCH(int, edges);
        QFETCH(QString, drawn);
        ORBCustomLabel label;
        label.resize(40, 20);
        label.cSetBackgroundColor(Qt::white);
        label.cSetBorderColor(kNormal, edges);
        const QImage image = shot(label);
        QStringList found;
        const std::pair<const char*, QPoint> middles[] = {
            {"left", {0, 10}}, {"right", {39, 10}}, {"top", {20, 0}}, {"bottom", {20, 19}}};
        for (const auto& middle : middles)
            if (image.pixelColor(middle.second) == kNormal)
                found << middle.first;
        QCOMPARE(found.join(' '), drawn);
        QCOMPARE(label.cBorderEdges(), edges);
        QCOMPARE(image.pixelColor(20, 10), QColor(Qt::white));
    }

    void fontsAndTheirColoursFollowTheStatus()
    {
        ORBCustomLabel label;
        label.setText("12");
        label.resize(60, 40);
        label.cSetFontColor("#00D53C");
        label.cSetFontSize(32);
        label.cSetFontSize(20, StatusDisabled);
        label.cSetFontSize(0); // no size
        QCOMPARE(label.font().pixelSize(), 32);
        QVERIFY(draws(shot(label), "#00D53C"));
        label.setEnabled(false);
        QCOMPARE(label.font().pixelSize(), 20);
        QFont bold;
        bold.setBold(true);
        bold.setPixelSize(14);
        label.cSetFont(bold, StatusDisabled); // takes the size before it away
        QCOMPARE(label.font().pixelSize(), 14);
        QVERIFY(label.font().bold());
        QVERIFY(label.cHasFont());
    }

    void picturesFollowTheStatus()
    {
        QTemporaryDir folder;
        ORBCustomPushButton button;
        button.resize(28, 26);
        button.cSetBackgroundImage(picture(folder, kNormal));
        button.cSetBackgroundImage(picture(folder, kHover), StatusHover);
        QCOMPARE(shot(button).pixelColor(14, 13), kNormal);
        point(button, true);
        QCOMPARE(shot(button).pixelColor(14, 13), kHover);
        button.cSetBackgroundImage("/there/is/no.png", StatusHover);
        shot(button); // draws without it
    }

    void keysAndClicksPressAButton()
    {
        ORBCustomPushButton button;
        QSignalSpy clicks(&button, &QPushButton::clicked);
        button.show();
        QTest::mouseClick(&button, Qt::LeftButton);
        QTest::keyClick(&button, Qt::Key_Space);
        QCOMPARE(clicks.count(), 2);
        button.setEnabled(false);
        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(clicks.count(), 2);
    }

    void aButtonMayLetClicksThrough()
    {
        ORBCustomPushButton behind;
        ORBCustomPushButton button(&behind);
        behind.resize(100, 40);
        behind.show();
        QSignalSpy through(&behind, &QPushButton::clicked);
        QSignalSpy own(&button, &QPushButton::clicked);
        QTest::mouseClick(behind.windowHandle(), Qt::LeftButton, {}, QPoint(10, 10));
        QCOMPARE(own.count(), 1);
        button.cSetControlClickEvent(false);
        QTest::mouseClick(behind.windowHandle(), Qt::LeftButton, {}, QPoint(10, 10));
        QCOMPARE(own.count(), 1);
        QCOMPARE(through.count(), 1);
    }

    void styleSelectorsLookDifferent()
    {
        QList<QImage> looks;
        for (const int style : {0, 1, 2}) {
            ORBCustomPushButton button(nullptr, style);
            button.resize(60, 26);
            looks << shot(button);
        }
        QVERIFY(looks[0] != looks[1] && looks[1] != looks[2] && looks[0] != looks[2]);
        ORBCustomPushButton unknown(nullptr, 9);
        unknown.resize(60, 26);
        QCOMPARE(shot(unknown), looks[0]);
    }

    void aButtonIsAsWideAsItsText()
    {
        ORBCustomPushButton button;
        button.setText("Import");
        const int narrow = button.sizeHint().width();
        button.setText("Import everything");
        QVERIFY(button.sizeHint().width() > narrow);
        QVERIFY(button.sizeHint().width() >= button.fontMetrics().horizontalAdvance("Import everything"));
    }

    void theFocusIsSeenWhenItCameByKeyboard()
    {
        QWidget window;
        ORBCustomPushButton first(&window), second(&window);
        second.move(0, 40);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        second.setFocus();
        const QImage plain = shot(first);
        first.setFocus(Qt::MouseFocusReason);
        QCOMPARE(shot(first), plain);
        second.setFocus();
        QTest::keyClick(&second, Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), &first);
        QVERIFY(shot(first) != plain);
    }

    void linesAreOnePixelThick()
    {
        ORBCustomLineWidget line;
        line.cSetLineType(0);
        QCOMPARE(line.sizeHint().width(), 1);
        line.cSetLineType(1);
        QCOMPARE(line.sizeHint().height(), 1);
        line.setFixedSize(1, 20);
        line.cSetBackgroundColor("#BFBFBF");
        const QImage image = shot(line);
        for (int y = 0; y < 20; ++y)
            QCOMPARE(image.pixelColor(0, y), QColor("#BFBFBF"));
    }

    void aCheckBoxShowsItsState()
    {
        ORBCustomCheckBox box(nullptr, 1);
        box.setTristate(true);
        box.setText("Serial Number");
        box.resize(140, 30);
        QList<QImage> looks;
        for (const Qt::CheckState state : {Qt::Unchecked, Qt::PartiallyChecked, Qt::Checked}) {
            box.setCheckState(state);
            looks << shot(box);
        }
        QVERIFY(looks[0] != looks[1] && looks[1] != looks[2] && looks[0] != looks[2]);
    }

    void checkBoxesWorkInAGroupAndByKeys()
    {
        QButtonGroup group;
        group.setExclusive(false);
        ORBCustomCheckBox boxes[2];
        for (int id = 0; id < 2; ++id)
            group.addButton(&boxes[id], id);
        QSignalSpy clicks(&group, &QButtonGroup::idClicked);
        boxes[0].show();
        QTest::mouseClick(&boxes[0], Qt::LeftButton, {}, QPoint(8, boxes[0].height() / 2));
        QTest::keyClick(&boxes[1], Qt::Key_Space);
        QCOMPARE(taken(clicks), Calls({{0}, {1}}));
        QVERIFY(boxes[0].isChecked() && boxes[1].isChecked());
    }

    void inAListTheWholeRowTakesClicks()
    {
        for (const int style : {0, 1}) {
            ORBCustomCheckBox box(nullptr, style);
            box.setText("All");
            box.resize(200, 30);
            box.show();
            QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(190, 15));
            QCOMPARE(box.isChecked(), style == 1);
        }
    }

    void screenReadersAreToldNamesAndStates()
    {
        ORBCustomCheckBox box;
        box.setText("&MAC Address");
        box.setChecked(true);
        QAccessibleInterface* read = QAccessible::queryAccessibleInterface(&box);
        QCOMPARE(read->text(QAccessible::Name), QString("MAC Address"));
        QCOMPARE(read->role(), QAccessible::CheckBox);
        QVERIFY(read->state().checked);
        ORBCustomPushButton button;
        button.setText("Export");
        read = QAccessible::queryAccessibleInterface(&button);
        QCOMPARE(read->text(QAccessible::Name), QString("Export"));
        QCOMPARE(read->role(), QAccessible::Button);
    }
};

QTEST_MAIN(StyledControlsTest)
#include "styled_controls_test.moc"
