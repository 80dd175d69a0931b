// What the window makes of the jobs' signals, one by one.
#include "WindowFixture.h"

#include <QDir>

namespace
{

enum Type : unsigned int
{
    BagImport = 0,
    BagExport = 1,
    Import = 2,
    Export = 3
};

class BatchProgress : public WindowFixture
{
protected:
    void SetUp() override
    {
        open();
        find(freeCameras(3));
    }

    void begin(const QByteArray& serial, unsigned int type) { window->onBeginThread(idOf(serial), type); }
    void tell(const QByteArray& serial, const QString& text, bool failed)
    {
        window->onThreadInfo(idOf(serial), text, failed);
    }
    void end(const QByteArray& serial, unsigned int type, const QString& path = "/f/x.fpk")
    {
        window->onEndThread(idOf(serial), type, path);
    }
    QTableWidgetItem* cell(const QByteArray& serial) const { return table().item(rowOf(serial), Operation); }
    QBrush brush(const QByteArray& serial) const { return cell(serial)->foreground(); }
    QVariant mark(const QByteArray& serial) const { return cell(serial)->data(Qt::UserRole + 2); }
    QStringList counts() const { return probe->counts(); }
    void changeLanguage()
    {
        QEvent event(QEvent::LanguageChange);
        QCoreApplication::sendEvent(window.get(), &event);
    }
};

const QBrush kNeutral(QColor("#555555"));
const QBrush kRed(Qt::red);

} // namespace

TEST_F(BatchProgress, ABeginCountsAndMarksTheRow)
{
    begin("S2", Import);
    EXPECT_EQ(probe->running, 1);
    EXPECT_EQ(counts(), (QStringList{"1", "0", "0"}));
    EXPECT_EQ(operation("S2"), "Start importing...");
    EXPECT_EQ(brush("S2"), kNeutral);
    EXPECT_EQ(mark("S2"), QVariant(true));
    EXPECT_EQ(operation("S1"), "");
}

TEST_F(BatchProgress, BeginTextsByTypeOfJob)
{
    const QStringList texts = {"Start importing...", "Start exporting...", "Start importing...",
                               "Start exporting...", ""};
    for (unsigned int type = 0; type < 5; ++type) {
        begin("S1", type);
        EXPECT_EQ(operation("S1"), texts[int(type)]) << "type " << type;
    }
    EXPECT_EQ(probe->running, 5);
}

TEST_F(BatchProgress, AnEndCountsDownBeforeItsRowSaysSo)
{
    begin("S1", Export);
    begin("S2", Export);
    QStringList told;
    QObject::connect(&table(), &QTableWidget::itemChanged, window.get(), [&](QTableWidgetItem* item) {
        if (item == cell("S1") && item->text() == "Exported.")
            told << counts().join(' ');
    });
    end("S1", Export);
    ASSERT_FALSE(told.isEmpty());
    EXPECT_EQ(told.first(), "1 0 0");
}

TEST_F(BatchProgress, SignalsOfUnknownDevicesAreIgnored)
{
    begin("S1", Export);
    window->onBeginThread(99, Export);
    window->onThreadInfo(99, "text", true);
    window->onEndThread(99, Export, "/f");
    EXPECT_EQ(probe->running, 1);
    EXPECT_EQ(counts(), (QStringList{"1", "0", "0"}));
    EXPECT_EQ(messages.size(), 0);
}

TEST_F(BatchProgress, AFailureIsShownInRedWithItsReasonAsTip)
{
    begin("S1", Import);
    tell("S1", "one\r\ntwo\r\n\nthree", true);
    EXPECT_EQ(operation("S1"), "onetwo\nthree"); // only CR LF together goes
    EXPECT_EQ(tip("S1"), "The Reasons of Failure :\r\none\r\ntwo\r\n\nthree");
    EXPECT_EQ(brush("S1"), kRed);
    EXPECT_EQ(mark("S1"), QVariant(false));
    EXPECT_EQ(messages.size(), 0);
}

TEST_F(BatchProgress, TheLastMessageWins)
{
    begin("S1", Import);
    tell("S1", "bad", true);
    tell("S1", "good\r\nagain", false);
    EXPECT_EQ(operation("S1"), "good\r\nagain"); // as it is
    EXPECT_EQ(brush("S1"), kNeutral);
    EXPECT_EQ(mark("S1"), QVariant(true));
    EXPECT_EQ(tip("S1"), "The Reasons of Failure :\r\nbad"); // the tip stays
    end("S1", Import);
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(operation("S1"), "Imported.");
}

TEST_F(BatchProgress, AnEndCountsByTheRowsMark)
{
    begin("S1", Export);
    begin("S2", Export);
    begin("S3", Import);
    EXPECT_EQ(counts(), (QStringList{"3", "0", "0"}));
    tell("S2", "bad", true);
    end("S2", Export);
    EXPECT_EQ(counts(), (QStringList{"2", "0", "1"}));
    EXPECT_EQ(operation("S2"), "bad");
    EXPECT_EQ(brush("S2"), kRed);
    end("S1", Export);
    EXPECT_EQ(counts(), (QStringList{"1", "1", "1"}));
    EXPECT_EQ(operation("S1"), "Exported.");
    EXPECT_EQ(brush("S1"), kNeutral);
    EXPECT_EQ(messages.size(), 0);
    end("S3", Import);
    EXPECT_EQ(counts(), (QStringList{"0", "2", "1"}));
    EXPECT_EQ(operation("S3"), "Imported.");
    EXPECT_EQ(messages.size(), 1);
}

TEST_F(BatchProgress, EndTextsByTypeOfJob)
{
    const QStringList texts = {"Imported.", "Exported.", "Imported.", "Exported."};
    for (unsigned int type = 0; type < 4; ++type) {
        begin("S1", type);
        end("S1", type);
        EXPECT_EQ(operation("S1"), texts[int(type)]) << "type " << type;
    }
}

TEST_F(BatchProgress, TheLastEndEnablesTheWindowAndClosesTheBusyDialog)
{
    window->show();
    window->setEnabled(false);
    probe->loading->show();
    begin("S1", Import);
    begin("S2", Import);
    end("S1", Import);
    EXPECT_FALSE(window->isEnabled());
    EXPECT_TRUE(probe->loading->isVisible());
    end("S2", Import);
    EXPECT_TRUE(window->isEnabled());
    EXPECT_FALSE(probe->loading->isVisible());
}

TEST_F(BatchProgress, AnEndWithoutABeginDoesNotEnableTheWindow)
{
    window->setEnabled(false);
    end("S1", Import);
    EXPECT_EQ(probe->running, -1);
    EXPECT_FALSE(window->isEnabled());
}

// Jobs count from their begin signal on: a first one that is over before the next has begun ends the batch
// for the window, and the next begins it again.
TEST_F(BatchProgress, AFastFirstJobEndsTheBatchEarly)
{
    window->show();
    window->setEnabled(false);
    probe->loading->show();
    begin("S1", Import);
    end("S1", Import);
    EXPECT_TRUE(window->isEnabled());
    EXPECT_FALSE(probe->loading->isVisible());
    EXPECT_EQ(messages.size(), 1);
    begin("S2", Import);
    EXPECT_EQ(counts(), (QStringList{"1", "1", "0"}));
    end("S2", Import);
    EXPECT_EQ(counts(), (QStringList{"0", "2", "0"}));
    EXPECT_EQ(messages.size(), 2);
}

TEST_F(BatchProgress, ImportsEndWithAMessageWithoutATitle)
{
    for (const unsigned int type : {BagImport, Import}) {
        messages.clear();
        begin("S1", type);
        end("S1", type);
        ASSERT_EQ(messages.size(), 1);
        EXPECT_EQ(messages[0].kind, ORBCustom::DialogRequest::MessageBox);
        EXPECT_EQ(messages[0].parent, window.get());
        EXPECT_EQ(messages[0].text, "Importing process is over.");
        EXPECT_EQ(messages[0].detail, "");
        EXPECT_EQ(messages[0].title, "");
        EXPECT_EQ(messages[0].hintIconStyle, 0);
        EXPECT_FALSE(messages[0].flag);
    }
}

TEST_F(BatchProgress, ExportsEndWithTheFileOfTheLastJob)
{
    for (const unsigned int type : {BagExport, Export}) {
        messages.clear();
        begin("S1", type);
        begin("S2", type);
        end("S1", type, "/folder/first.fpk");
        end("S2", type, "/folder/second.fpk");
        ASSERT_EQ(messages.size(), 1);
        EXPECT_EQ(messages[0].kind, ORBCustom::DialogRequest::SaveDone);
        EXPECT_EQ(messages[0].parent, window.get());
        EXPECT_EQ(messages[0].text, "Exporting process is over.");
        EXPECT_EQ(messages[0].path,
                  QDir::toNativeSeparators("/folder/second.fpk")); // the file, not the folder
        EXPECT_FALSE(messages[0].flag);
    }
}

TEST_F(BatchProgress, TheBusyDialogIsGoneBeforeTheSummary)
{
    window->show();
    int busy = -1;
    whileMessageIsShown = [&](const ORBCustom::DialogRequest&) { busy = probe->loading->isVisible(); };
    for (const unsigned int type : {Import, Export}) {
        busy = -1;
        probe->loading->show();
        begin("S1", type);
        end("S1", type);
        EXPECT_EQ(busy, 0) << "type " << type;
    }
}

TEST_F(BatchProgress, TheLastEndsPathIsShownEvenWhenItFailed)
{
    begin("S1", Export);
    begin("S2", Export);
    end("S1", Export, "/folder/good.fpk");
    tell("S2", "bad", true);
    end("S2", Export, "/folder/bad.fpk");
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].path, QDir::toNativeSeparators("/folder/bad.fpk"));
}

TEST_F(BatchProgress, WithoutASuccessThereIsNoSummary)
{
    for (const char* serial : {"S1", "S2", "S3"})
        begin(serial, Export);
    for (const char* serial : {"S1", "S2", "S3"}) {
        tell(serial, "bad", true);
        end(serial, Export);
    }
    EXPECT_EQ(counts(), (QStringList{"0", "0", "3"}));
    EXPECT_EQ(messages.size(), 0);
}

TEST_F(BatchProgress, ABeginForgetsSuccessesBeforeIt)
{
    begin("S1", Import);
    begin("S2", Import);
    end("S1", Import);
    EXPECT_TRUE(probe->haveSuccess);
    begin("S3", Import);
    EXPECT_FALSE(probe->haveSuccess);
    for (const char* serial : {"S2", "S3"}) {
        tell(serial, "bad", true);
        end(serial, Import);
    }
    EXPECT_EQ(counts(), (QStringList{"0", "1", "2"}));
    EXPECT_EQ(messages.size(), 0);
}

TEST_F(BatchProgress, ALanguageChangeClearsTheColumnButNotTheMarks)
{
    begin("S1", Import);
    begin("S2", Import);
    tell("S1", "bad", true);
    changeLanguage();
    EXPECT_EQ(operation("S1"), "");
    EXPECT_EQ(operation("S2"), "");
    EXPECT_EQ(tip("S1"), "");
    EXPECT_EQ(mark("S1"), QVariant(false));
    EXPECT_EQ(counts(), (QStringList{"2", "0", "0"}));
    end("S1", Import);
    end("S2", Import);
    EXPECT_EQ(counts(), (QStringList{"0", "1", "1"}));
    EXPECT_EQ(operation("S1"), ""); // failed, and its reason was cleared
    EXPECT_EQ(operation("S2"), "Imported.");
}

TEST_F(BatchProgress, ClearingStopsAtTheFirstRowWithoutACell)
{
    begin("S1", Import);
    begin("S3", Import);
    delete table().takeItem(1, Operation);
    changeLanguage();
    EXPECT_EQ(operation("S1"), "");
    EXPECT_EQ(text(2, Operation), "Start importing...");
}

TEST_F(BatchProgress, ALanguageChangeSetsTheTextsOfTheBatchsKind)
{
    probe->operateType = 1;
    speakChinese();
    EXPECT_EQ(probe->runningText->text(), " 正在导出");
    EXPECT_EQ(probe->successText->text(), " 导出成功");
    EXPECT_EQ(probe->loading->LabelText(), "正在导出属性...");
    probe->operateType = 0;
    speakEnglish();
    EXPECT_EQ(probe->runningText->text(), " Importing");
    EXPECT_EQ(probe->successText->text(), " Imported.");
    EXPECT_EQ(probe->loading->LabelText(), "Importing features...");
}

TEST_F(BatchProgress, ChineseTexts)
{
    speakChinese();
    begin("S1", Import);
    EXPECT_EQ(operation("S1"), "开始导入...");
    begin("S2", Export);
    EXPECT_EQ(operation("S2"), "开始导出...");
    tell("S3", "x", true);
    EXPECT_EQ(tip("S3"), "失败原因：\r\nx");
    end("S2", Export);
    EXPECT_EQ(operation("S2"), "已导出。");
    end("S1", Import);
    EXPECT_EQ(operation("S1"), "已导入。");
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].text, "导入过程结束。");
    begin("S1", Export);
    end("S1", Export);
    EXPECT_EQ(messages.last().text, "导出过程结束。");
}

TEST_F(BatchProgress, MessagesWithoutATitleAreCalledPrompt)
{
    window->OnShowMsg("", "content", "detail");
    window->OnShowMsg("title", "content", "");
    ASSERT_EQ(messages.size(), 2);
    EXPECT_EQ(messages[0].title, "Prompt");
    EXPECT_EQ(messages[0].text, "content");
    EXPECT_EQ(messages[0].detail, "detail");
    EXPECT_EQ(messages[0].hintIconStyle, 0);
    EXPECT_FALSE(messages[0].flag);
    EXPECT_EQ(messages[1].title, "title");
    speakChinese();
    window->OnShowMsg("", "", "");
    EXPECT_EQ(messages[2].title, "提示");
}

TEST_F(BatchProgress, BackShowsTheButtonsAndKeepsTheCounts)
{
    probe->stack->setCurrentWidget(probe->progressPage);
    begin("S1", Import);
    end("S1", Import);
    EXPECT_EQ(probe->stack->currentWidget(), probe->progressPage);
    probe->backButton->click();
    EXPECT_EQ(probe->stack->currentWidget(), probe->buttonPage);
    EXPECT_EQ(counts(), (QStringList{"0", "1", "0"}));
    EXPECT_EQ(operation("S1"), "Imported.");
}

TEST_F(BatchProgress, CloseNeedsACountAndARunningWorkerToBeRefused)
{
    window->show();
    begin("S1", Import); // counted, but nothing runs
    EXPECT_TRUE(window->close());
}
