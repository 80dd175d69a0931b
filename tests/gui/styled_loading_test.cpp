// The busy dialog: the program closes it, nobody else.
#include "gui/StyledTools.h"

#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomLoadingDialog.h>
#include <StyledCtl/ORBCustomMessageBox.h>
#include <StyledCtl/ORBCustomTitleBar.h>

class StyledLoadingTest : public QObject
{
    Q_OBJECT

private slots:
    void cannotBeClosedByHand()
    {
        ORBCustomLoadingDialog loading;
        bool stayed = false;
        inNextDialog([&](QDialog* dialog) {
            QCOMPARE(dialog, &loading);
            QTest::keyClick(dialog, Qt::Key_Escape);
            QTest::keyClick(dialog, Qt::Key_Return);
            QTest::keyClick(dialog, Qt::Key_F4, Qt::AltModifier);
            closeByWindowSystem(dialog);
            stayed = dialog->isVisible();
            dialog->close();
        });
        loading.exec();
        QVERIFY(stayed);
        QVERIFY(!loading.isVisible());
        QVERIFY(!loading.cTitleBar()->isVisibleTo(&loading)); // no button to close it either
    }

    void closesFromInsideItsOwnExecAndRunsAgain()
    {
        ORBCustomLoadingDialog loading;
        for (int round = 0; round < 3; ++round) {
            QTimer::singleShot(0, &loading, [&] {
                QVERIFY(loading.isVisible());
                QVERIFY(loading.isModal());
                QVERIFY(loading.close());
                QVERIFY(!loading.isVisible());
                loading.close(); // once more does no harm
            });
            QCOMPARE(loading.exec(), int(QDialog::Rejected));
        }
    }

    void anotherDialogMayFollowInTheSlotThatClosedIt()
    {
        ORBCustomLoadingDialog loading;
        QStringList order;
        QTimer::singleShot(0, &loading, [&] {
            loading.close();
            inNextDialog([&](QDialog* box) {
                QVERIFY(!loading.isVisible());
                order << "message";
                box->accept();
            });
            QCOMPARE(ORBCustomMessageBox::simple(nullptr, "over", "", "", 0, false), int(QDialog::Accepted));
            order << "slot ended";
        });
        loading.exec();
        order << "exec ended";
        QCOMPARE(order, QStringList({"message", "slot ended", "exec ended"}));
    }

    void mayBeDeletedInsideItsOwnExec()
    {
        QPointer<ORBCustomLoadingDialog> loading = new ORBCustomLoadingDialog;
        QTimer::singleShot(0, qApp, [&] { delete loading; });
        loading->exec();
        QVERIFY(!loading);
    }

    void saysWhatItWaitsFor()
    {
        ORBCustomLoadingDialog loading;
        const ORBCustomLabel* label = part<ORBCustomLabel>(&loading, "LoadingText");
        QCOMPARE(label->text(), QString("Please wait..."));
        loading.SetLabelText("Importing <b>features</b>...");
        QCOMPARE(loading.LabelText(), QString("Importing <b>features</b>..."));
        QCOMPARE(label->textFormat(), Qt::PlainText);
        QCOMPARE(loading.accessibleName(), QString("Importing <b>features</b>..."));
        QCOMPARE(loading.windowTitle(), QString("Importing <b>features</b>..."));
    }

    void itsOwnTextFollowsTheLanguage()
    {
        ORBCustomLoadingDialog own, given;
        given.SetLabelText("Exporting");
        Brackets language;
        QCoreApplication::processEvents();
        QCOMPARE(own.LabelText(), QString("[Please wait...]"));
        QCOMPARE(given.LabelText(), QString("Exporting"));
    }

    void thePictureTurnsWhileItIsSeen()
    {
        ORBCustomLoadingDialog loading;
        loading.show();
        QVERIFY(QTest::qWaitForWindowExposed(&loading));
        QWidget* ring = part<QWidget>(&loading, "BusyRing");
        const QImage first = ring->grab().toImage();
        QTRY_VERIFY(ring->grab().toImage() != first);
    }
};

QTEST_MAIN(StyledLoadingTest)
#include "styled_loading_test.moc"
