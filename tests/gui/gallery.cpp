// Draws every widget of the suite into pictures (in the build folder's gallery/), to be looked at, and checks
// the colours that must be in them. At any number of screen pixels for one of the window's.
#include <StyledCtl/ORBCustomCheckBox.h>
#include <StyledCtl/ORBCustomCheckHeaderView.h>
#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomLineWidget.h>
#include <StyledCtl/ORBCustomLoadingDialog.h>
#include <StyledCtl/ORBCustomMessageBox.h>
#include <StyledCtl/ORBCustomPushButton.h>
#include <StyledCtl/ORBCustomSaveDoneHintDlg.h>
#include <StyledCtl/ORBCustomTableWidget.h>
#include <StyledCtl/ORBCustomTitleBar.h>

#include <QBoxLayout>
#include <QDir>
#include <QPainter>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

namespace
{

int scale()
{
    return qRound(qApp->devicePixelRatio());
}

QString folder()
{
    return QString("%1/%2x").arg(GALLERY_FOLDER).arg(scale());
}

// A stand-in for an icon file, in a size of its own.
QString drawnIcon(const QString& name, const QColor& color, int size)
{
    const QString path = folder() + "/" + name + ".png";
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(image.rect().adjusted(1, 1, -1, -1));
    painter.end();
    image.save(path);
    return path;
}

// In the window's pixels.
int pixelsOf(const QImage& image, const QColor& color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y) == color;
    return count / (scale() * scale());
}

// Of lines and edges of letters, which are blended with what lies below them.
int reddishPixels(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            count += color.red() > 200 && color.green() < 100 && color.blue() < 100;
        }
    return count / (scale() * scale());
}

QImage save(QWidget& widget, const QString& name)
{
    const QImage image = widget.grab().toImage().convertToFormat(QImage::Format_ARGB32);
    // On a desktop, so that shadows and round corners can be judged.
    QImage onDesktop(image.size() + QSize(20, 20) * scale(), QImage::Format_RGB32);
    onDesktop.setDevicePixelRatio(scale());
    onDesktop.fill("#C9D3DF");
    QPainter(&onDesktop).drawImage(10, 10, image);
    onDesktop.save(folder() + "/" + name + ".png");
    return image;
}

ORBCustomPushButton* addButton(QBoxLayout* layout, const QString& text, int style, bool enabled)
{
    ORBCustomPushButton* button = new ORBCustomPushButton(nullptr, style);
    button->setText(text);
    button->setEnabled(enabled);
    layout->addWidget(button);
    return button;
}

} // namespace

class StyledGallery : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QDir().mkpath(folder());
        QApplication::setStyle("Fusion");
        ORBCustom::setShadows(ORBCustom::ShadowsAlways);
    }

    void controls()
    {
        ORBCustomMainWindow window;
        window.cEnableDefualtShadow();
        window.cTitleBar()->cSetTitleText("Controls");
        window.cTitleBar()->cSetTitleIcon(drawnIcon("icon", "#3A7BD5", 64));
        QWidget* central = new QWidget;
        QVBoxLayout* rows = new QVBoxLayout(central);
        rows->setContentsMargins(25, 10, 25, 20);
        rows->setSpacing(14);
        const char* const names[] = {"Framed", "Flat", "Main"};
        for (int style = 0; style < 3; ++style) {
            QHBoxLayout* row = new QHBoxLayout;
            addButton(row, names[style], style, true);
            addButton(row, "Hover", style, true)->setAttribute(Qt::WA_UnderMouse);
            addButton(row, "Down", style, true)->setDown(true);
            addButton(row, "Off", style, false);
            rows->addLayout(row);
        }
        QHBoxLayout* framed = new QHBoxLayout;
        for (const bool enabled : {true, false}) {
            ORBCustomPushButton* button = addButton(framed, enabled ? "Import" : "Export", 0, enabled);
            button->setFixedSize(70, 26);
            button->cSetBorderColor("#D0DF00", ORBCustom::BorderAll);
        }
        ORBCustomPushButton* picture = addButton(framed, "", 0, true);
        picture->setFixedSize(28, 26);
        picture->cSetBorderColor("#D0DF00", ORBCustom::BorderAll);
        picture->cSetBackgroundImage(drawnIcon("more", "#555555", 16));
        framed->addStretch();
        rows->addLayout(framed);

        QHBoxLayout* counts = new QHBoxLayout;
        ORBCustomLabel* count = new ORBCustomLabel;
        QFont font = count->font();
        font.setPixelSize(32);
        font.setBold(true);
        font.setItalic(true);
        count->cSetFont(font);
        count->cSetFontColor("#00D53C");
        count->setText("3");
        ORBCustomLabel* caption = new ORBCustomLabel;
        caption->setText(" Imported.");
        caption->cSetFontColor("#6C6C6C");
        ORBCustomLineWidget* line = new ORBCustomLineWidget;
        line->setFixedSize(1, 20);
        line->cSetBackgroundColor("#BFBFBF");
        counts->addWidget(count);
        counts->addWidget(caption);
        counts->addSpacing(20);
        counts->addWidget(line);
        counts->addStretch();
        rows->addLayout(counts);

        for (const int style : {0, 1}) {
            QHBoxLayout* row = new QHBoxLayout;
            for (const Qt::CheckState state : {Qt::Unchecked, Qt::PartiallyChecked, Qt::Checked}) {
                ORBCustomCheckBox* box = new ORBCustomCheckBox(nullptr, style);
                box->setText("Serial Number");
                box->setTristate(true);
                box->setCheckState(state);
                box->setAttribute(Qt::WA_UnderMouse, style == 1 && state == Qt::Checked);
                row->addWidget(box);
            }
            ORBCustomCheckBox* off = new ORBCustomCheckBox(nullptr, style);
            off->setText("Off");
            off->setChecked(true);
            off->setEnabled(false);
            row->addWidget(off);
            rows->addLayout(row);
        }
        rows->addStretch();
        window.cSetCentralWidget(central);
        window.resize(520, 380);
        window.show();
        const QImage image = save(window, "controls");
        QCOMPARE(image.size(), QSize(520 + 28, 380 + 28) * scale());
        QVERIFY(pixelsOf(image, "#D0DF00") > 150);
        QVERIFY(pixelsOf(image, "#00D53C") > 50);
        QCOMPARE(pixelsOf(line->grab().toImage(), "#BFBFBF"), 20);
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
        QVERIFY(image.pixelColor(270 * scale(), 10 * scale()).alpha() > 0);

        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_Tab);
        for (int i = 0; i < 4; ++i)
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        save(window, "controls_focus");
    }

    // The title's picture is shown 18 pixels wide, 12 from the left: here one line of the file for each of
    // the screen.
    void picturesAreAsFineAsTheScreen()
    {
        const int size = 18 * scale();
        QImage stripes(size, size, QImage::Format_RGB32);
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                stripes.setPixelColor(x, y, x % 2 ? Qt::white : Qt::black);
        QVERIFY(stripes.save(folder() + "/stripes.png"));
        ORBCustomMainWindow window;
        window.cTitleBar()->cSetTitleIcon(folder() + "/stripes.png");
        window.resize(200, 100);
        window.show();
        const QImage shown = window.cTitleBar()->grab().toImage();
        for (int x = 0; x < size; ++x)
            QCOMPARE(shown.pixelColor(12 * scale() + x, 18 * scale()), QColor(x % 2 ? Qt::white : Qt::black));
    }

    void table()
    {
        ORBCustomMainWindow window;
        window.cSetBackgroundColor("#F2F3F5");
        window.cEnableDefualtShadow();
        window.cTitleBar()->cSetTitleText("Import/Export Features 1.0.0.0");
        window.cTitleBar()->cSetTitleIcon(drawnIcon("icon", "#3A7BD5", 64));
        window.cTitleBar()->setFixedHeight(37);
        QWidget* central = new QWidget;
        QHBoxLayout* layout = new QHBoxLayout(central);
        layout->setContentsMargins(25, 12, 25, 20);
        layout->setSpacing(0);
        layout->addWidget(newTree());
        layout->addWidget(newTable());
        window.cSetCentralWidget(central);
        window.resize(1058, 632);
        window.show();
        const QImage image = save(window, "table");
        QVERIFY(reddishPixels(image) > 10);
        QVERIFY(pixelsOf(image, "#22B455") > 500);
        window.setEnabled(false);
        save(window, "table_disabled");
    }

    void chooser()
    {
        ORBCustomMainWindow popup;
        popup.cSetTitleVisible(false);
        popup.cSetBorderColor("#8F8B88", ORBCustom::BorderAllRounded);
        QWidget* central = new QWidget;
        QVBoxLayout* layout = new QVBoxLayout(central);
        layout->setContentsMargins(16, 20, 16, 20);
        layout->setSpacing(10);
        for (const char* text : {"Port ID", "Model Name", "Device User ID", "Serial Number", "MAC Address",
                                 "Status", "Operation Status", "All"}) {
            ORBCustomCheckBox* box = new ORBCustomCheckBox(nullptr, 1);
            box->setFixedHeight(30);
            box->setText(text);
            box->cSetFontColor(ORBCustom::fontColor(1));
            box->setChecked(*text == 'S');
            layout->addWidget(box);
        }
        popup.cSetCentralWidget(central);
        popup.resize(176, popup.height());
        popup.cPopup();
        const QImage image = save(popup, "chooser");
        QCOMPARE(image.size(), QSize(176, 350) * scale());
        QVERIFY(pixelsOf(image, "#8F8B88") > 900);
    }

    void dialogs()
    {
        ORBCustomLoadingDialog loading;
        loading.SetLabelText("Importing features...");
        loading.show();
        QVERIFY(pixelsOf(save(loading, "loading"), "#D0DF00") > 30);

        ORBCustomSaveDoneHintDlg done(nullptr, "", "");
        done.SetMsgText("Exporting process is over.", "/home/user/cameras/line 3/Model GX 2050_00812.fpk",
                        true);
        done.show();
        QVERIFY(pixelsOf(save(done, "save_done"), "#22B455") > 200);

        for (const int style : {0, 1, 2})
            QTimer::singleShot(0, this,
                               [style] {
                                   QWidget* box = QApplication::activeModalWidget();
                                   save(*box, QString("message_%1").arg(style));
                                   if (style == 2) {
                                       box->findChild<ORBCustomPushButton*>("MessageUnfold")->click();
                                       QCoreApplication::processEvents();
                                       save(*box, "message_unfolded");
                                   }
                                   box->close();
                               }),
                ORBCustomMessageBox::simple(
                    nullptr,
                    style == 0 ? QString("Operation failed. You can operate 4 devices at most.")
                               : QString("The camera does not answer. Its cable may be unplugged, or another "
                                         "program may hold it; try again when it shows as free."),
                    style == 2 ? "GX 2050 (00812)\nstatus 0x80000010, no answer in 3 s" : "", "", style,
                    style != 0);
        QVERIFY(QFile::exists(folder() + "/message_unfolded.png"));
    }

private:
    QTreeWidget* newTree()
    {
        QTreeWidget* tree = new QTreeWidget;
        tree->setHeaderHidden(true);
        tree->setProperty("styleKey", "ToolTree");
        tree->setFixedWidth(186);
        QTreeWidgetItem* all = new QTreeWidgetItem(tree, {"All devices"});
        QTreeWidgetItem* gige = new QTreeWidgetItem(all, {"GigE Vision"});
        new QTreeWidgetItem(new QTreeWidgetItem(gige, {"eth0"}), {"GX 2050 (00812)"});
        tree->expandAll();
        tree->setCurrentItem(all);
        return tree;
    }

    ORBCustomTableWidget* newTable()
    {
        ORBCustomTableWidget* table = new ORBCustomTableWidget;
        ORBCustomCheckHeaderView* header = new ORBCustomCheckHeaderView(table);
        table->setHorizontalHeader(header);
        header->setCheckBoxVisible(0, true);
        header->setFixedHeight(32);
        header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        table->setAlternatingRowColors(true);
        table->setIconSize({34, 34});
        table->setColumnCount(5);
        table->setHorizontalHeaderLabels({"", "Model Name", "Serial Number", "Status", "Operation Status"});
        const int widths[] = {38, 170, 162, 54, 131};
        for (int column = 0; column < 5; ++column) {
            table->setColumnWidth(column, widths[column]);
            header->enableSort(column, column > 0);
        }
        header->setSectionResizeMode(4, QHeaderView::Stretch);
        header->setSortIndicator(1, Qt::AscendingOrder);
        table->setRowCount(10);
        const QIcon state(drawnIcon("state", "#22B455", 20));
        for (int row = 0; row < 10; ++row) {
            table->setRowHeight(row, 38);
            for (int column = 0; row < 5 && column < 5; ++column)
                table->setItem(row, column, new QTableWidgetItem);
            if (row >= 5)
                continue;
            table->setCheckBoxVisible(row, 0, true);
            table->setCellCheckState(row, 0, row % 2 ? Qt::Unchecked : Qt::Checked, false);
            table->setCheckBoxEnable(row, 0, row < 3);
            table->item(row, 1)->setText(QString("GX 205%1").arg(row));
            table->item(row, 2)->setText(QString("0081%1").arg(row));
            table->item(row, 3)->setIcon(state);
            table->item(row, 4)->setText(row == 1 ? "Failed to open the camera. It does not answer."
                                                  : "Imported.");
            table->item(row, 4)->setForeground(row == 1 ? QBrush(Qt::red) : QBrush(QColor("#555555")));
        }
        table->selectRow(1);
        return table;
    }
};

QTEST_MAIN(StyledGallery)
#include "gallery.moc"
