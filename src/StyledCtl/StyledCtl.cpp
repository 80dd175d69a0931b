#include <StyledCtl/StyledCtl.h>

#include "HookCall.h"
#include "Theme.h"
#include <StyledCtl/ORBCustomMainWindow.h>

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
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows)
        if (ORBCustomMainWindow* styled = qobject_cast<ORBCustomMainWindow*>(window))
            styled->cApplyDefaultFont();
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
    font.setFamilies(g_language == LanguageChinese ? chinese + latin + QStringList("sans-serif")
                                                   : latin + chinese + QStringList("sans-serif"));
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
    return answer.answered ? answer.path
                           : QFileDialog::getExistingDirectory(parent, caption, directory, options);
}

} // namespace ORBCustom
