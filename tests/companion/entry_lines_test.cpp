// How entries of a features file are told to people: which, in which order, and on how many columns.
#include "companion/CameraChecked.h"
#include "iefeatures/check/EntryLines.h"
#include "iefeatures/console/Text.h"

using companion::CameraCheck;
using companion::CheckMode;
using companion::Detail;
using companion::EntryCheck;
using companion::EntryVerdict;
using companion::ReportStyle;
using ::testing::HasSubstr;
using ::testing::Not;

namespace
{

EntryCheck entry(const QString& feature, EntryVerdict verdict, const QString& camera, const QString& file,
                 const QString& reason = {})
{
    EntryCheck entry;
    entry.feature = feature;
    entry.cameraValue = camera;
    (verdict == EntryVerdict::WouldChange ? entry.newValue : entry.fileValue) = file;
    entry.judge(verdict, reason);
    return entry;
}

std::string told(const std::vector<EntryCheck>& entries, const ReportStyle& style)
{
    CameraCheck check;
    check.entries = entries;
    return companion::entryLines(check, style).toStdString();
}

ReportStyle onColumns(int columns)
{
    ReportStyle style;
    style.columns = columns;
    return style;
}

} // namespace

TEST(EntryLines, TellFirstWhatIsAmiss)
{
    EXPECT_EQ(told({entry("A", EntryVerdict::WouldChange, "1", "2"),
                    entry("B", EntryVerdict::NotWritable, "1", "2"),
                    entry("C", EntryVerdict::Unchanged, "1", "1"), entry("D", EntryVerdict::Absent, {}, "2")},
                   {}),
              "  not writable: B: camera 1, file 2\n"
              "  absent: D\n"
              "  would change: A: 1 -> 2\n");
}

TEST(EntryLines, TakeWhatTheyNeedWhereNobodyCounts)
{
    const QString longOne(500, 'x');
    EXPECT_EQ(told({entry("A", EntryVerdict::NotApplied, longOne, "y", "why")}, {}),
              "  not applied: A: camera " + longOne.toStdString() + ", file y: why\n");
}

TEST(EntryLines, GoOnBelowWhereColumnsEnd)
{
    const EntryCheck one = entry("Width", EntryVerdict::OutOfRange, "640", "6400", "6400 is too wide for it");
    EXPECT_EQ(told({one}, onColumns(69)),
              "  out of range: Width: camera 640, file 6400: 6400 is too wide for it\n");
    EXPECT_EQ(told({one}, onColumns(68)), "  out of range: Width: camera 640, file 6400\n"
                                          "      6400 is too wide for it\n");
    EXPECT_EQ(told({one}, onColumns(25)), "  out of range: Width:\n"
                                          "      camera 640, file 6400\n"
                                          "      6400 is too wide\n"
                                          "      for it\n");
}

TEST(EntryLines, CutValuesInTheMiddleAndNeverPassTheColumns)
{
    const QString longOne = "begin" + QString(100, 'x') + "end";
    const std::string text =
        told({entry("UserText", EntryVerdict::NotApplied, longOne, "begin")}, onColumns(80));
    EXPECT_THAT(text, HasSubstr("camera beginxx"));
    EXPECT_THAT(text, HasSubstr("...x"));
    EXPECT_THAT(text, HasSubstr("xend, file begin\n"));
    for (const QString& line : QString::fromStdString(text).split('\n'))
        EXPECT_LE(companion::displayWidth(line), 80) << line.toStdString();
}

TEST(EntryLines, BreakTitlesToo)
{
    EntryCheck one = entry("DecimationHorizontal", EntryVerdict::WouldChange, "1", "2");
    one.isRegister = true;
    one.address = 0x85004;
    one.selectors = "DecimationSelector=All";
    EXPECT_EQ(told({one}, onColumns(80)),
              "  would change: DecimationHorizontal (DecimationSelector=All, register\n"
              "      0x00085004): 0x00000001 -> 0x00000002\n");
}

TEST(EntryLines, LeaveRoomForTheColonBehindATitle)
{
    const EntryCheck one =
        entry("FeatureOfTwentyFourSigns", EntryVerdict::OutOfRange, "1", "2", "it is too much for it");
    const std::string wide = told({one}, onColumns(41));
    EXPECT_EQ(wide.substr(0, wide.find('\n')), "  out of range: FeatureOfTwentyFourSigns:");
    for (int columns = 38; columns < 46; ++columns)
        for (const QString& line : QString::fromStdString(told({one}, onColumns(columns))).split('\n'))
            EXPECT_LE(companion::displayWidth(line), columns) << line.toStdString();
}

TEST(EntryLines, TellNothingOfFeaturesInASummary)
{
    EXPECT_EQ(told({entry("A", EntryVerdict::NotApplied, "1", "2")}, Detail::Summary), "");
}

TEST(EntryLines, LeaveOutOnDemandWhatHasNoOtherSide)
{
    EntryCheck warned = entry("W", EntryVerdict::WouldChange, "1", "2");
    warned.warnings += "beware";
    ReportStyle style = Detail::All;
    style.hasDifferencesOnly = true;
    const std::string text = told(
        {warned, entry("Gone", EntryVerdict::Absent, {}, "2"), entry("S", EntryVerdict::Skipped, {}, "2"),
         entry("Bad", EntryVerdict::Broken, {}, "2"), entry("T", EntryVerdict::State, "1", "2")},
        style);
    EXPECT_EQ(text, "  would change: W: 1 -> 2\n  state: T: camera 1, file 2\n");
}

TEST(EntryLines, StandUnderTheirCategories)
{
    EntryCheck entries[] = {
        entry("A", EntryVerdict::WouldChange, "1", "2"), entry("B", EntryVerdict::WouldChange, "1", "2"),
        entry("C", EntryVerdict::NotWritable, "1", "2"), entry("D", EntryVerdict::WouldChange, "1", "2")};
    entries[0].category = entries[2].category = "AnalogControl";
    entries[1].category = "DeviceControl";
    ReportStyle style;
    style.isGrouped = true;
    EXPECT_EQ(told({std::begin(entries), std::end(entries)}, style), " AnalogControl:\n"
                                                                     "  not writable: C: camera 1, file 2\n"
                                                                     "  would change: A: 1 -> 2\n"
                                                                     " DeviceControl:\n"
                                                                     "  would change: B: 1 -> 2\n"
                                                                     " in no category:\n"
                                                                     "  would change: D: 1 -> 2\n");
}

TEST(EntryLines, TellRegistersInHexadecimal)
{
    EntryCheck one = entry("Lut", EntryVerdict::NotApplied, "10,16777216", "11,0");
    one.isRegister = true;
    one.address = 0x13000;
    EXPECT_EQ(told({one}, {}), "  not applied: Lut (register 0x00013000): camera 0x0000000A 0x01000000, file "
                               "0x0000000B 0x00000000\n");
    one.selectors = "LutSelector=Red";
    EXPECT_THAT(told({one}, {}), HasSubstr("Lut (LutSelector=Red, register 0x00013000): "));
}

TEST(EntryLines, TellARegisterOnceThatSeveralFeaturesStandFor)
{
    EntryCheck gain = entry("Gain", EntryVerdict::WouldChange, "1", "2");
    gain.isRegister = true;
    gain.address = 16;
    EntryCheck raw = gain;
    raw.feature = "GainRaw";
    EntryCheck other = gain;
    other.feature = "GainAbs";
    other.newValue = "3";
    EXPECT_EQ(told({gain, raw, other}, {}),
              "  would change: Gain, GainRaw (register 0x00000010): 0x00000001 -> 0x00000002\n"
              "  would change: GainAbs (register 0x00000010): 0x00000001 -> 0x00000003\n");
}

using tests::CameraChecked;

TEST_F(CameraChecked, NamesEntriesOfEnumerations)
{
    device().setEnumeration("Mode", 2, {1, 2});
    device().setEntryName("Mode", 1, "On");
    EXPECT_EQ(told(tests::plain("Mode", "Enumeration", "1"), CheckMode::Plan),
              "  would change: Mode: 2 -> On (1)\n  1 would change\n");
    const companion::Json object = companion::checkJson(
        check(tests::plain("Mode", "Enumeration", "1"), CheckMode::Verify))["features"][0];
    EXPECT_EQ(object["file_entry"], "On");
    EXPECT_FALSE(object.contains("camera_entry"));
}
