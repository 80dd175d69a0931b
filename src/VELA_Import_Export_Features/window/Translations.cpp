#include "window/Translations.h"

#include <StyledCtl/StyledCtl.h>

#include <QCoreApplication>
#include <QTranslator>

#include <array>

namespace
{

constexpr const char* kFiles[] = {"./Translation/Import_Export_Features_zh_CN.qm",
                                  "./Translation/qt_zh_CN.qm", "./Translation/StyledCtl_zh_CN.qm",
                                  "./Translation/SuiteTools_zh_CN.qm", "./Translation/DevListMgr_zh_CN.qm"};

using Translators = std::array<QTranslator, std::size(kFiles)>;

Translators& translators()
{
    static Translators* const group = new Translators; // for the whole process, past the application object
    return *group;
}

bool installAll()
{
    const QString folder = QCoreApplication::applicationDirPath();
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        QTranslator& translator = translators()[i];
        if (!translator.load(kFiles[i], folder))
            return false;
        QCoreApplication::installTranslator(&translator);
    }
    return true;
}

} // namespace

bool LoadTranslations(const QString& language)
{
    if (language == "CH") {
        ORBCustom::setLanguage(ORBCustom::LanguageChinese);
        return installAll();
    }
    if (language == "ENG") {
        ORBCustom::setLanguage(ORBCustom::LanguageEnglish);
        for (QTranslator& translator : translators())
            QCoreApplication::removeTranslator(&translator);
    }
    return true;
}
