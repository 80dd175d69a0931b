// The note that saving is done. A hook stands in for the desktop's file manager.
#include "gui/StyledTools.h"

#include <StyledCtl/DialogHooks.h>
#include <StyledCtl/ORBCustomSaveDoneHintDlg.h>
#include <StyledCtl/ORBCustomTitleBar.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>

using ORBCustom::DialogAnswer;
using ORBCustom::DialogRequest;

class StyledSaveDoneTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { ORBCustom::setDialogHook({}); }

    void opensTheFolderOfTheFile_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("a file") << "/Model_0001.fpk";
        QTest::newRow("a file that is gone") << "/gone.fpk";
        QTest::newRow("the folder itself") << "";
    }

    void opensTheFolderOfTheFile()
    {
        QFETCH(QString, path);
        QTemporaryDir folder;
        QFile file(folder.filePath("Model_0001.fpk"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        ORBCustomSaveDoneHintDlg dialog(nullptr, "", "");
        dialog.SetMsgText("Exporting process is over.", folder.path() + path, false);
        QStringList opened;
        answerFolderRequests(opened, 1);
        inNextDialog([&](QDialog* shown) {
            QTest::mouseClick(part<QPushButton>(shown, "SaveDoneOpen"), Qt::LeftButton);
            QVERIFY(shown->isVisible()); // the user may still read it
            QVERIFY(!part<QLabel>(shown, "SaveDoneTrouble")->isVisible());
            QTest::mouseClick(part<QPushButton>(shown, "SaveDoneOk"), Qt::LeftButton);
        });
        QCOMPARE(dialog.exec(), int(QDialog::Accepted));
        QCOMPARE(opened, QStringList(folder.path()));
    }

    void tellsWhenTheFolderCannotBeOpened()
    {
        ORBCustomSaveDoneHintDlg dialog(nullptr, "", "");
        dialog.SetMsgText("Saved.", QDir::rootPath() + "nowhere/x.fpk", false);
        dialog.show();
        const int height = dialog.height();
        const QLabel* trouble = part<QLabel>(&dialog, "SaveDoneTrouble");
        QStringList opened;
        answerFolderRequests(opened, 0);
        part<QPushButton>(&dialog, "SaveDoneOpen")->click();
        QVERIFY(trouble->isVisible());
        QCOMPARE(trouble->text(), QString("The folder could not be opened."));
        answerFolderRequests(opened, 1);
        part<QPushButton>(&dialog, "SaveDoneOpen")->click();
        QVERIFY(!trouble->isVisible());
        QCOMPARE(dialog.height(), height);
        const QString folder = QDir::rootPath() + "nowhere";
        QCOMPARE(opened, QStringList({folder, folder}));
    }

    void showsTextAndPath()
    {
        ORBCustomSaveDoneHintDlg dialog(nullptr, "", "");
        dialog.SetMsgText("Exporting <i>process</i> is over.", "/data/Model_0001.fpk", false);
        dialog.show();
        const QLabel* text = part<QLabel>(&dialog, "SaveDoneText");
        QCOMPARE(text->text(), QString("Exporting <i>process</i> is over."));
        QCOMPARE(text->textFormat(), Qt::PlainText);
        const QLineEdit* path = part<QLineEdit>(&dialog, "SaveDonePath");
        QCOMPARE(path->text(), QString("/data/Model_0001.fpk"));
        QVERIFY(path->isReadOnly());
        QCOMPARE(path->accessibleName(), QString("Saved as"));
        QCOMPARE(dialog.cTitleBar()->cTitleText(), QString("Prompt"));
        QCOMPARE(dialog.windowTitle(), QString("Prompt"));
        QVERIFY(!part<QCheckBox>(&dialog, "SaveDoneNotAgain")->isVisible());
    }

    void withoutAPathThereIsNothingToOpen()
    {
        ORBCustomSaveDoneHintDlg dialog(nullptr, "", "");
        dialog.SetMsgText("Saved.", "", false);
        dialog.show();
        QVERIFY(!part<QPushButton>(&dialog, "SaveDoneOpen")->isVisible());
        QVERIFY(!part<QLineEdit>(&dialog, "SaveDonePath")->isVisible());
    }

    void offersNotToBeShownAgain()
    {
        ORBCustomSaveDoneHintDlg dialog(nullptr, "", "");
        dialog.SetMsgText("Saved.", "/data", true);
        dialog.show();
        QCheckBox* box = part<QCheckBox>(&dialog, "SaveDoneNotAgain");
        QVERIFY(box->isVisible());
        QVERIFY(!dialog.IsNotShownAgain());
        box->click();
        QVERIFY(dialog.IsNotShownAgain());
    }

    void keysCloseIt_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("result");
        QTest::newRow("Enter") << int(Qt::Key_Return) << int(QDialog::Accepted);
        QTest::newRow("Enter of the keypad") << int(Qt::Key_Enter) << int(QDialog::Accepted);
        QTest::newRow("Escape") << int(Qt::Key_Escape) << int(QDialog::Rejected);
    }

    void keysCloseIt()
    {
        QFETCH(int, key);
        QFETCH(int, result);
        for (const char* focused : {"SaveDoneOk", "SaveDonePath"}) {
            ORBCustomSaveDoneHintDlg dialog(nullptr, "", "");
            dialog.SetMsgText("Saved.", "/data", false);
            inNextDialog([&](QDialog* shown) {
                QCOMPARE(QApplication::focusWidget()->objectName(), QString("SaveDoneOk"));
                part<QWidget>(shown, focused)->setFocus();
                QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));
            });
            QCOMPARE(dialog.exec(), result);
        }
    }

    void tabReachesEverything()
    {
        ORBCustomSaveDoneHintDlg dialog(nullptr, "", "");
        dialog.SetMsgText("Saved.", "/data", true);
        QStringList order;
        inNextDialog([&](QDialog* shown) {
            for (int i = 0; i < 6; ++i) {
                order << QApplication::focusWidget()->objectName();
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            }
            shown->reject();
        });
        dialog.exec();
        QCOMPARE(order, QStringList({"SaveDoneOk", "TitleClose", "SaveDonePath", "SaveDoneNotAgain",
                                     "SaveDoneOpen", "SaveDoneOk"}));
    }

    void canBeUsedWhileItsParentIsDisabled()
    {
        QWidget parent;
        ORBCustomSaveDoneHintDlg dialog(&parent, "", "");
        parent.setEnabled(false);
        dialog.SetMsgText("Saved.", "/data", false);
        inNextDialog([&](QDialog* shown) {
            QVERIFY(part<QWidget>(shown, "SaveDoneOk")->isEnabled());
            QTest::mouseClick(part<QWidget>(shown, "TitleClose"), Qt::LeftButton);
        });
        QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    }

    void givenTextsStandInForItsOwn()
    {
        ORBCustomSaveDoneHintDlg own(nullptr, "", ""), given(nullptr, "Done", "Show");
        Brackets language;
        QCoreApplication::processEvents();
        QCOMPARE(own.cTitleBar()->cTitleText(), QString("[Prompt]"));
        QCOMPARE(part<QPushButton>(&own, "SaveDoneOpen")->text(), QString("[Open folder]"));
        QCOMPARE(part<QPushButton>(&own, "SaveDoneOk")->text(), QString("[OK]"));
        QCOMPARE(given.cTitleBar()->cTitleText(), QString("Done"));
        QCOMPARE(part<QPushButton>(&given, "SaveDoneOpen")->text(), QString("Show"));
    }

    void theHookAnswersInItsPlace()
    {
        QWidget parent;
        ORBCustomSaveDoneHintDlg dialog(&parent, "", "");
        dialog.SetMsgText("Saved.", "/data/x.fpk", true);
        DialogRequest asked;
        ORBCustom::setDialogHook([&](const DialogRequest& request) {
            asked = request;
            return DialogAnswer{true, 42, QString()};
        });
        QCOMPARE(dialog.exec(), 42);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(asked.kind, DialogRequest::SaveDone);
        QCOMPARE(asked.parent, &parent);
        QCOMPARE(asked.title, QString("Prompt"));
        QCOMPARE(asked.text, QString("Saved."));
        QCOMPARE(asked.path, QString("/data/x.fpk"));
        QVERIFY(asked.flag);
    }

private:
    static void answerFolderRequests(QStringList& opened, int success)
    {
        ORBCustom::setDialogHook([&opened, success](const DialogRequest& request) {
            if (request.kind != DialogRequest::OpenFolder)
                return DialogAnswer();
            opened << request.path;
            return DialogAnswer{true, success, QString()};
        });
    }
};

QTEST_MAIN(StyledSaveDoneTest)
#include "styled_save_done_test.moc"
