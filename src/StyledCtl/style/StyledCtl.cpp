#include <StyledCtl/StyledCtl.h>

#include "StyledCtl/style/Theme.h"

#include <QApplication>

namespace
{

ORBCustom::Language g_language = ORBCustom::LanguageEnglish;

} // namespace

namespace ORBCustom
{

void setLanguage(Language language)
{
    if (g_language == language)
        return;
    g_language = language;
    styled::refreshFont();
}

Language currentLanguage()
{
    return g_language;
}

QFont defaultFont()
{
    // Every family after the first is there for the letters that the ones before it lack.
    static const QStringList latin = {"Lato", "Segoe UI", "Noto Sans"};
    static const QStringList chinese = {"Microsoft YaHei", "Noto Sans CJK SC", "Source Han Sans SC",
                                        "WenQuanYi Micro Hei", "WenQuanYi Zen Hei"};
    QFont font = QApplication::font();
    const QStringList preferred = g_language == LanguageChinese ? chinese + latin : latin + chinese;
    font.setFamilies(preferred + QStringList("sans-serif"));
    font.setPixelSize(12);
    return font;
}

QColor fontColor(int style)
{
    return styled::themeColor(style == 0 ? "text" : style == 2 ? "textHint" : "textSoft");
}

} // namespace ORBCustom
