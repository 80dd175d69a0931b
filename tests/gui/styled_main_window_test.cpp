// The frameless window: moving, resizing, its title bar's buttons, closing, pop-ups.
#include "gui/StyledTools.h"

#include <StyledCtl/ORBCustomMainWindow.h>
#include <StyledCtl/ORBCustomTitleBar.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QLineEdit>
#include <QPushButton>

namespace
{

const QSize kSize(400, 300);

// A window of a person's size with two fields in it; counts the wishes to close it.
class Window : public ORBCustomMainWindow
{
public:
    explicit Window(int edges = 0)
    {
        cTitleBar()->cSetTitleText("Import/Export Features");
        cSetStrechEdges(edges);
        QWidget* central = new QWidget;
        for (QLineEdit* field : {&first, &second})
            field->setParent(central);
        second.move(0, 40);
        cSetCentralWidget(central);
        setMinimumSize(200, 150);
        resize(kSize);
        move(100, 100);
    }
    ~Window() override
    {
        first.setParent(nullptr);
        second.setParent(nullptr);
    }

    void closeEvent(QCloseEvent* event) override
    {
        ++closeWishes;
        event->setAccepted(closable);
        if (closable)
            ORBCustomMainWindow::closeEvent(event);
    }

    QAbstractButton* button(const char* name) { return part<QAbstractButton>(this, name); }
    void activate()
    {
        show();
        activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(this));
    }

    QLineEdit first, second;
    int closeWishes = 0;
    bool closable = true;
};

// Where the content with its title bar lies on the screen.
QRect seen(const ORBCustomMainWindow& window)
{
    const QPoint corner = window.cTitleBar()->mapToGlobal(QPoint());
    return QRect(corner, window.size());
}

} // namespace

class StyledMainWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { ORBCustom::setShadows(ORBCustom::ShadowsWhereBlended); }

    void hasNoFrameButATitleBarAboveItsContent()
    {
        Window window;
        window.show();
        QVERIFY(window.windowFlags() & Qt::FramelessWindowHint);
        QCOMPARE(window.cTitleBar()->geometry(), QRect(0, 0, 400, 36));
        QCOMPARE(window.cCentralWidget()->geometry(), QRect(0, 36, 400, 264));
        window.cTitleBar()->setFixedHeight(37);
        QTRY_COMPARE(window.cCentralWidget()->geometry(), QRect(0, 37, 400, 263));
        window.cSetTitleVisible(false);
        QTRY_COMPARE(window.cCentralWidget()->geometry(), QRect(0, 0, 400, 300));
    }

    void aNewCentralWidgetReplacesTheOneBefore()
    {
        ORBCustomMainWindow window;
        const QPointer<QWidget> before = new QWidget;
        window.cSetCentralWidget(before);
        QWidget* after = new QWidget;
        window.cSetCentralWidget(after);
        QVERIFY(!before);
        window.cSetCentralWidget(after);
        QCOMPARE(window.cCentralWidget(), after);
    }

    void theBarMovesTheWindow()
    {
        Window window;
        window.show();
        drag(window.cTitleBar(), QPoint(150, 18), QPoint(60, 45));
        QCOMPARE(seen(window), QRect(QPoint(160, 145), kSize));
        drag(window.cTitleBar(), QPoint(150, 18), QPoint(2, 1)); // a shaky click
        QCOMPARE(seen(window), QRect(QPoint(160, 145), kSize));
        drag(window.cCentralWidget(), QPoint(150, 200), QPoint(60, 45));
        QCOMPARE(seen(window), QRect(QPoint(160, 145), kSize));
    }

    void draggingAMaximizedWindowRestoresItUnderThePointer()
    {
        Window window;
        window.show();
        window.button("TitleMaximize")->click();
        QTRY_VERIFY(window.isMaximized());
        const QPoint pointer = window.cTitleBar()->mapToGlobal(QPoint(300, 18)) + QPoint(40, 60);
        drag(window.cTitleBar(), QPoint(300, 18), QPoint(40, 60));
        QVERIFY(!window.isMaximized());
        QCOMPARE(window.size(), kSize);
        QVERIFY(QRect(seen(window).topLeft(), QSize(kSize.width(), 36)).contains(pointer));
    }

    void edgesResize_data()
    {
        QTest::addColumn<int>("edge");
        QTest::addColumn<QPoint>("from");   // in the window
        QTest::addColumn<QRect>("changed"); // what each side moves by when dragged by (30, 20)
        QTest::newRow("left") << 1 << QPoint(1, 150) << QRect(QPoint(30, 0), QPoint(0, 0));
        QTest::newRow("right") << 2 << QPoint(398, 150) << QRect(QPoint(0, 0), QPoint(30, 0));
        QTest::newRow("top") << 4 << QPoint(150, 1) << QRect(QPoint(0, 20), QPoint(0, 0));
        QTest::newRow("bottom") << 8 << QPoint(150, 298) << QRect(QPoint(0, 0), QPoint(0, 20));
        QTest::newRow("top left") << 16 << QPoint(1, 1) << QRect(QPoint(30, 20), QPoint(0, 0));
        QTest::newRow("top right") << 32 << QPoint(398, 1) << QRect(QPoint(0, 20), QPoint(30, 0));
        QTest::newRow("bottom left") << 64 << QPoint(1, 298) << QRect(QPoint(30, 0), QPoint(0, 20));
        QTest::newRow("bottom right") << 128 << QPoint(398, 298) << QRect(QPoint(0, 0), QPoint(30, 20));
    }

    void edgesResize()
    {
        QFETCH(int, edge);
        QFETCH(QPoint, from);
        QFETCH(QRect, changed);
        const QRect before(QPoint(100, 100), kSize);
        Window window(edge);
        window.show();
        QWidget* grip = window.childAt(from);
        QVERIFY(grip->cursor().shape() != Qt::ArrowCursor);
        drag(grip, grip->mapFrom(&window, from), QPoint(30, 20));
        QCOMPARE(seen(window),
                 before.adjusted(changed.left(), changed.top(), changed.right(), changed.bottom()));

        Window fixed(255 & ~edge); // every other edge
        fixed.show();
        QCOMPARE(fixed.childAt(from)->cursor().shape(), Qt::ArrowCursor);
    }

    void theOtherEdgeStaysAtTheSmallestSize()
    {
        Window window(ORBCustom::StretchLeft | ORBCustom::StretchBottom);
        window.show();
        QWidget* left = window.childAt(1, 150);
        drag(left, left->mapFrom(&window, QPoint(1, 150)), QPoint(380, 0));
        QCOMPARE(seen(window), QRect(300, 100, 200, 300));
        QWidget* bottom = window.childAt(100, 298);
        drag(bottom, bottom->mapFrom(&window, QPoint(100, 298)), QPoint(0, -290));
        QCOMPARE(seen(window), QRect(300, 100, 200, 150));
    }

    void edgesOfAMaximizedWindowDoNotResize()
    {
        Window window(255);
        window.show();
        window.showMaximized();
        QTRY_VERIFY(window.isMaximized());
        QCOMPARE(window.childAt(150, 1), window.cTitleBar());
        window.showNormal();
        QTRY_VERIFY(window.childAt(150, 1) != window.cTitleBar());
    }

    void theMaximizeButtonTurnsIntoRestore()
    {
        Window window;
        window.show();
        QAbstractButton* button = window.button("TitleMaximize");
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_VERIFY(window.isMaximized());
        QCOMPARE(button->toolTip(), QString("Restore"));
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_VERIFY(!window.isMaximized());
        QCOMPARE(button->toolTip(), QString("Maximize"));
        QCOMPARE(window.size(), kSize);
        QTest::mouseDClick(window.cTitleBar(), Qt::LeftButton, {}, QPoint(150, 18));
        QTRY_VERIFY(window.isMaximized());
        QTest::mouseDClick(window.cTitleBar(), Qt::LeftButton, {}, QPoint(150, 18));
        QTRY_VERIFY(!window.isMaximized());
    }

    void withoutAMaximizeButtonADoubleClickDoesNothing()
    {
        Window window;
        window.cTitleBar()->cSetTitleControls(ORBCustomTitleBar::ControlClose | 1024);
        window.show();
        QCOMPARE(window.cTitleBar()->cTitleControls(), int(ORBCustomTitleBar::ControlClose));
        QVERIFY(!window.button("TitleMinimize")->isVisible());
        QVERIFY(!window.button("TitleMaximize")->isVisible());
        QVERIFY(window.button("TitleClose")->isVisible());
        QTest::mouseDClick(window.cTitleBar(), Qt::LeftButton, {}, QPoint(150, 18));
        QVERIFY(!window.isMaximized());
        window.cTitleBar()->cSetTitleControls(7);
        QVERIFY(window.button("TitleMinimize")->isVisible());
    }

    void theMinimizeButtonMinimizes()
    {
        Window window;
        window.show();
        QTest::mouseClick(window.button("TitleMinimize"), Qt::LeftButton);
        QTRY_VERIFY(window.isMinimized());
    }

    void everyCloseAsksFirst()
    {
        Window window;
        window.closable = false;
        window.activate();
        QTest::mouseClick(window.button("TitleClose"), Qt::LeftButton);
        QCOMPARE(window.closeWishes, 1);
        closeByWindowSystem(&window); // Alt+F4, the task bar
        QCOMPARE(window.closeWishes, 2);
        QVERIFY(!window.close());
        QCOMPARE(window.closeWishes, 3);
        QVERIFY(window.isVisible());
        window.closable = true;
        QTest::mouseClick(window.button("TitleClose"), Qt::LeftButton);
        QVERIFY(!window.isVisible());
    }

    void escapeAndEnterDoNotCloseIt()
    {
        Window window;
        QPushButton inside(window.cCentralWidget());
        QSignalSpy pressed(&inside, &QPushButton::clicked);
        window.activate();
        window.first.setFocus();
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter})
            QTest::keyClick(QApplication::focusWidget(), key);
        QVERIFY(window.isVisible());
        QCOMPARE(window.closeWishes, 0);
        QCOMPARE(pressed.count(), 0);
    }

    void runsModally()
    {
        Window window;
        inNextDialog([&](QDialog* dialog) {
            QCOMPARE(dialog, &window);
            QTest::mouseClick(window.button("TitleClose"), Qt::LeftButton);
        });
        QCOMPARE(window.exec(), int(QDialog::Rejected));
        QCOMPARE(window.closeWishes, 1);
    }

    void tabEndsAtTheTitlesButtonsWhichKeysPress()
    {
        Window window;
        window.activate();
        window.first.setFocus();
        QWidget* const order[] = {&window.second, window.button("TitleMinimize"),
                                  window.button("TitleMaximize"), window.button("TitleClose"), &window.first};
        for (QWidget* next : order) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget(), next);
        }
        window.button("TitleMaximize")->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QTRY_VERIFY(window.isMaximized());
        QTest::keyClick(window.button("TitleMaximize"), Qt::Key_Space);
        QTRY_VERIFY(!window.isMaximized());
        QTest::keyClick(window.button("TitleClose"), Qt::Key_Enter);
        QCOMPARE(window.closeWishes, 1);
    }

    void theFocusBeginsInTheContent()
    {
        ORBCustomMainWindow window;
        QWidget* central = new QWidget(&window);
        QLineEdit* field = new QLineEdit(central);
        window.cSetCentralWidget(central);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QCOMPARE(QApplication::focusWidget(), field);
        QTest::keyClick(field, Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget()->objectName(), QString("TitleMinimize"));
    }

    void namesFollowTheLanguage()
    {
        Window window;
        const auto names = [&] {
            QStringList list;
            for (const char* name : {"TitleMinimize", "TitleMaximize", "TitleClose"})
                list << QAccessible::queryAccessibleInterface(window.button(name))->text(QAccessible::Name);
            return list;
        };
        QCOMPARE(names(), QStringList({"Minimize", "Maximize", "Close"}));
        QCOMPARE(window.cTitleBar()->accessibleName(), QString("Import/Export Features"));
        QCOMPARE(window.cTitleBar()->cTitleText(), QString("Import/Export Features"));
        Brackets language;
        QCoreApplication::processEvents();
        QCOMPARE(names(), QStringList({"[Minimize]", "[Maximize]", "[Close]"}));
        QCOMPARE(window.button("TitleClose")->toolTip(), QString("[Close]"));
    }

    void aTitleIconThatIsMissingLeavesNoGap()
    {
        Window window;
        window.show();
        const QImage without = window.cTitleBar()->grab().toImage();
        window.cTitleBar()->cSetTitleIcon(":/there/is/no.png");
        QCOMPARE(window.cTitleBar()->grab().toImage(), without);
        window.cTitleBar()->cSetTitleIcon(":/qt-project.org/styles/commonstyle/images/file-16.png");
        QVERIFY(window.cTitleBar()->grab().toImage() != without);
    }

    void theShadowLiesOutsideItsSize()
    {
        ORBCustom::setShadows(ORBCustom::ShadowsAlways);
        Window window(255);
        window.cEnableDefualtShadow();
        window.show();
        QCOMPARE(window.size(), kSize);
        QCOMPARE(window.minimumSize(), QSize(200, 150));
        QCOMPARE(window.QWidget::size(), kSize + QSize(28, 28));
        QCOMPARE(window.cTitleBar()->geometry(), QRect(14, 14, 400, 36));
        QWidget* left = window.childAt(14 - 3, 150); // also from outside of the panel
        QVERIFY(left);
        drag(left, left->mapFrom(&window, QPoint(14 - 3, 150)), QPoint(-50, 0));
        QCOMPARE(window.size(), QSize(450, 300));
        window.showMaximized();
        QTRY_VERIFY(window.isMaximized());
        QTRY_COMPARE(window.cTitleBar()->pos(), QPoint(0, 0)); // fills the screen without one
    }

    void withoutBlendingThereIsALineInsteadOfAShadow()
    {
        ORBCustom::setShadows(ORBCustom::ShadowsNever);
        Window window;
        window.cEnableDefualtShadow();
        window.show();
        QCOMPARE(window.QWidget::size(), kSize);
        const QImage image = window.grab().toImage();
        QVERIFY(image.pixelColor(0, 200) != image.pixelColor(5, 200));
        QCOMPARE(image.pixelColor(5, 200), QColor("#F2F3F5"));
    }

    void aPopupIsAsHighAsItsContentAndClosesByEscape()
    {
        ORBCustomMainWindow popup;
        popup.cSetTitleVisible(false);
        QWidget* central = new QWidget;
        central->setFixedHeight(90);
        popup.cSetCentralWidget(central);
        popup.resize(176, 400);
        for (int round = 0; round < 2; ++round) {
            popup.cPopup();
            QVERIFY(popup.isVisible());
            QCOMPARE(popup.windowType(), Qt::Popup);
            QCOMPARE(popup.size(), QSize(176, 90));
            QTest::keyClick(&popup, Qt::Key_Escape);
            QTRY_VERIFY(!popup.isVisible());
        }
    }

    void aPopupClosesByAClickElsewhere()
    {
        ORBCustomMainWindow popup;
        popup.cSetCentralWidget(new QWidget);
        popup.resize(176, 100);
        popup.cPopup();
        QTest::mousePress(&popup, Qt::LeftButton, {}, QPoint(50, 10));
        QVERIFY(popup.isVisible());
        QTest::mousePress(&popup, Qt::LeftButton, {}, QPoint(-50, -50));
        QTRY_VERIFY(!popup.isVisible());
    }
};

QTEST_MAIN(StyledMainWindowTest)
#include "styled_main_window_test.moc"
