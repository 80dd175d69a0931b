// The message box.
#include "gui/StyledTools.h"

#include <StyledCtl/DialogHooks.h>
#include <StyledCtl/ORBCustomMessageBox.h>
#include <StyledCtl/ORBCustomTitleBar.h>

#include <QCheckBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

namespace
{

int show(const QString& detail = QString(), bool withCancel = false)
{
    return ORBCustomMessageBox::simple(nullptr, "Operation failed.", detail, "", 0, withCancel);
}

} // namespace

class StyledMessageBoxTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { ORBCustom::setDialogHook({}); }

    void showsTitleAndContentAsPlainText()
    {
        inNextDialog([](QDialog* dialog) {
            ORBCustomMessageBox* box = qobject_cast<ORBCustomMessageBox*>(dialog);
            QVERIFY(box);
            QVERIFY(box->isModal());
            QCOMPARE(box->cTitleBar()->cTitleText(), QString("Import"));
            QCOMPARE(box->windowTitle(), QString("Import"));
            const QLabel* text = part<QLabel>(box, "MessageText");
            QCOMPARE(text->text(), QString("<b>Model</b> & co"));
            QCOMPARE(text->textFormat(), Qt::PlainText);
            QCOMPARE(box->accessibleDescription(), QString("<b>Model</b> & co"));
            QVERIFY(!part<QWidget>(box, "MessageUnfold")->isVisible());
            QVERIFY(!part<QWidget>(box, "MessageDetail")->isVisible());
            QVERIFY(!part<QWidget>(box, "MessageCancel")->isVisible());
            box->accept();
        });
        QCOMPARE(ORBCustomMessageBox::simple(nullptr, "<b>Model</b> & co", "", "Import", 1, false),
                 int(QDialog::Accepted));
    }

    void anEmptyTitleIsTheLibrarysOwn()
    {
        inNextDialog([](QDialog* box) {
            QCOMPARE(box->windowTitle(), QString("Prompt"));
            Brackets language;
            QCoreApplication::processEvents();
            QCOMPARE(box->windowTitle(), QString("[Prompt]"));
            QCOMPARE(part<QPushButton>(box, "MessageOk")->text(), QString("[OK]"));
            QCOMPARE(part<QPushButton>(box, "MessageCancel")->text(), QString("[Cancel]"));
            box->accept();
        });
        show("", true);
    }

    void theDetailUnfoldsAndFolds()
    {
        inNextDialog([](QDialog* box) {
            QPushButton* unfold = part<QPushButton>(box, "MessageUnfold");
            const QPlainTextEdit* detail = part<QPlainTextEdit>(box, "MessageDetail");
            QCOMPARE(unfold->text(), QString("Show details"));
            QVERIFY(!detail->isVisible());
            const int folded = box->QWidget::height();
            QTest::mouseClick(unfold, Qt::LeftButton);
            QVERIFY(detail->isVisible());
            QCOMPARE(detail->toPlainText(), QString("line 1\nline 2"));
            QVERIFY(detail->isReadOnly());
            QCOMPARE(detail->accessibleName(), QString("Details"));
            QCOMPARE(unfold->text(), QString("Hide details"));
            QVERIFY(box->QWidget::height() > folded + 100);
            QTest::mouseClick(unfold, Qt::LeftButton);
            QVERIFY(!detail->isVisible());
            QCOMPARE(box->QWidget::height(), folded);
            box->accept();
        });
        show("line 1\nline 2");
    }

    void keysAnswerWhereverTheFocusIs_data()
    {
        QTest::addColumn<QString>("focused");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("result");
        const int yes = QDialog::Accepted, no = QDialog::Rejected;
        QTest::newRow("Enter on OK") << "MessageOk" << int(Qt::Key_Return) << yes;
        QTest::newRow("space on OK") << "MessageOk" << int(Qt::Key_Space) << yes;
        QTest::newRow("Escape on OK") << "MessageOk" << int(Qt::Key_Escape) << no;
        QTest::newRow("Enter on Cancel") << "MessageCancel" << int(Qt::Key_Enter) << no;
        QTest::newRow("space on Cancel") << "MessageCancel" << int(Qt::Key_Space) << no;
        QTest::newRow("Enter in the detail") << "MessageDetail" << int(Qt::Key_Return) << yes;
        QTest::newRow("Escape in the detail") << "MessageDetail" << int(Qt::Key_Escape) << no;
        QTest::newRow("Enter on the title's button") << "TitleClose" << int(Qt::Key_Return) << no;
    }

    void keysAnswerWhereverTheFocusIs()
    {
        QFETCH(QString, focused);
        QFETCH(int, key);
        QFETCH(int, result);
        inNextDialog([&](QDialog* box) {
            QCOMPARE(QApplication::focusWidget()->objectName(), QString("MessageOk"));
            part<QPushButton>(box, "MessageUnfold")->click();
            part<QWidget>(box, qPrintable(focused))->setFocus();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));
        });
        QCOMPARE(show("detail", true), result);
    }

    void tabReachesEverything()
    {
        QStringList order;
        inNextDialog([&](QDialog* box) {
            part<QPushButton>(box, "MessageUnfold")->click();
            for (int i = 0; i < 6; ++i) {
                order << QApplication::focusWidget()->objectName();
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            }
            box->reject();
        });
        show("detail", true);
        QCOMPARE(order, QStringList({"MessageOk", "TitleClose", "MessageDetail", "MessageUnfold",
                                     "MessageCancel", "MessageOk"}));
    }

    void closingRejects()
    {
        inNextDialog(
            [](QDialog* box) { QTest::mouseClick(part<QWidget>(box, "TitleClose"), Qt::LeftButton); });
        QCOMPARE(show(), int(QDialog::Rejected));
        inNextDialog([](QDialog* box) { closeByWindowSystem(box); });
        QCOMPARE(show(), int(QDialog::Rejected));
    }

    void canBeUsedWhileItsParentIsDisabled()
    {
        QWidget parent;
        parent.setEnabled(false);
        inNextDialog(
            [](QDialog* box) { QTest::mouseClick(part<QWidget>(box, "MessageOk"), Qt::LeftButton); });
        QCOMPARE(ORBCustomMessageBox::simple(&parent, "over", "", "", 0, false), int(QDialog::Accepted));
    }

    void theParentMayGoWhileItIsOpen()
    {
        QPointer<QWidget> parent = new QWidget;
        QTimer::singleShot(0, qApp, [&] { delete parent; });
        QCOMPARE(ORBCustomMessageBox::simple(parent, "over", "", "", 0, false), int(QDialog::Rejected));
        QVERIFY(!parent);
    }

    void theHookAnswersInItsPlace()
    {
        QWidget parent;
        ORBCustom::DialogRequest asked;
        ORBCustom::setDialogHook([&](const ORBCustom::DialogRequest& request) {
            asked = request;
            return ORBCustom::DialogAnswer{true, 7, QString()};
        });
        QCOMPARE(ORBCustomMessageBox::simple(&parent, "content", "detail", "title", 2, true), 7);
        QCOMPARE(asked.kind, ORBCustom::DialogRequest::MessageBox);
        QCOMPARE(asked.parent, &parent);
        QCOMPARE(asked.text, QString("content"));
        QCOMPARE(asked.detail, QString("detail"));
        QCOMPARE(asked.title, QString("title"));
        QCOMPARE(asked.hintIconStyle, 2);
        QVERIFY(asked.flag);
    }
};

QTEST_MAIN(StyledMessageBoxTest)
#include "styled_message_box_test.moc"
