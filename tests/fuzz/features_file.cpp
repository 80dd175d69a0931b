// Two features files, with a line "====" between them, as the companion reads them: shown, compared, and the
// first one held against a camera.
#include "fuzz/Scripted.h"

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/compare/DiffReport.h"
#include "iefeatures/compare/FeaturesReport.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/files/NamedFeatures.h"

namespace
{

using namespace companion;

void checkText(const QString& text)
{
    for (const uint character : text.toUcs4())
        fuzz::promise(character == '\n' || !actsOnTerminal(character), "nothing acts on a terminal");
}

void checkJson(const Json& fields)
{
    const std::string line = jsonLine("show", "file", fields);
    fuzz::promise(line.find('\n') == line.size() - 1, "an object is one line");
    fuzz::promise(Json::parse(line, nullptr, false).is_object(), "an object is JSON");
}

ie::FeaturesContent contentOf(const std::string& text)
{
    ie::LoadedFile loaded =
        ie::loadFeaturesText(QString::fromUtf8(text.data(), static_cast<int>(text.size())));
    return loaded.failure == ie::LoadedFile::Failure::None
               ? ie::readFeatures(loaded.document.documentElement())
               : ie::FeaturesContent();
}

void show(const ie::FeaturesContent& content)
{
    checkText(featuresText(content));
    checkText(featuresText(content, 40));
    checkJson(featuresJson(content));
    namedBy(content);
}

void compare(const FeatureSource& a, const FeatureSource& b)
{
    const FeatureComparison comparison =
        compareFeatures(a.content, b.content, [](const FeatureDifference&, bool) { return std::nullopt; });
    checkText(diffText(comparison, a.title, b.title));
    ReportStyle narrow;
    narrow.columns = 40;
    checkText(diffText(comparison, a.title, b.title, narrow));
    checkJson(diffJson(comparison, a, b));
    fuzz::promise(
        compareFeatures(a.content, a.content, [](const auto&, bool) { return std::nullopt; }).isEqual(),
        "a file is equal to itself");
}

void holdAgainstACamera(const ie::FeaturesContent& content)
{
    ListedCamera camera;
    camera.model = "Cam";
    camera.serial = "S1";
    camera.device.stDeviceInfo = tests::deviceInfo(KX_TRANSPORT_GIGE, "S1", "Cam");
    for (const CheckMode mode : {CheckMode::Plan, CheckMode::Verify}) {
        fuzz::freshCamera();
        const CameraCheck check =
            companion::checkCamera(camera, content, CheckRule(mode), [] { return true; });
        fuzz::checkCamera();
        checkText(companion::checkText({check}));
        checkJson(companion::checkJson(check));
        for (const tests::TraceEntry& call : tests::Recorder::instance().calls())
            fuzz::promise(!call.operation.startsWith("Set") && call.operation != "WriteMemory",
                          "a check only reads");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::prepareQt();
    fuzz::Input input(data, size);
    FeatureSource a;
    a.title = "a.fpk";
    a.content = contentOf(input.textUpTo("\n====\n"));
    FeatureSource b;
    b.title = "b.fpk";
    b.content = contentOf(input.rest());
    show(a.content);
    compare(a, b);
    holdAgainstACamera(a.content);
    return 0;
}
