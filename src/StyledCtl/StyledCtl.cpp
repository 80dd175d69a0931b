#include <StyledCtl/StyledCtl.h>

#include "HookCall.h"
#include "Theme.h"

#include <QApplication>
#include <QFileInfo>

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

QString getExistingDirectory(QWidget* parent, const QString& caption, const QString& directory,
                             QFileDialog::Options options)
{
    DialogRequest request;
    request.kind = DialogRequest::ExistingDirectory;
    request.parent = parent;
    request.title = caption;
    request.text = directory;
    const DialogAnswer answer = styled::askHook(request);
    if (answer.answered)
        return answer.path;
    // The dialog would take a file for what is chosen already, and then refuse it.
    const QFileInfo start(directory);
    return QFileDialog::getExistingDirectory(parent, caption, start.isFile() ? start.path() : directory,
                                             options);
}

} // namespace ORBCustom
