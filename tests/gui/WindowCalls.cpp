#include "WindowCalls.h"

#include <DevListMgr/VELADeviceTree.h>
#include <StyledCtl/ExistingDirectory.h>
#include <StyledCtl/ORBCustomLineWidget.h>
#include <StyledCtl/ORBCustomLoadingDialog.h>
#include <StyledCtl/ORBCustomPushButton.h>
#include <StyledCtl/ORBCustomTableWidget.h>
#include <StyledCtl/ORBCustomTitleBar.h>
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QEvent>
#include <QHeaderView>
#include <QSettings>

#include <cstdlib>
#include <dlfcn.h>

#define TRACED __attribute__((visibility("default")))

namespace
{

QStringList g_calls;
std::function<void(const QString& call)> g_hook;

void note(const QString& call)
{
    g_calls << call;
    if (g_hook)
        g_hook(call);
}

// The function that this file stands before. A member is called with its object as the first argument.
template <typename Function>
Function* passedOn(const char* symbol)
{
    void* const function = dlsym(RTLD_NEXT, symbol);
    if (!function)
        std::abort();
    return reinterpret_cast<Function*>(function);
}

QString named(const char* function, const QObject* object)
{
    return QString("%1 %2").arg(object->objectName(), function);
}

} // namespace

QStringList tests::takeWindowCalls()
{
    return std::exchange(g_calls, {});
}

void tests::setWindowCallHook(std::function<void(const QString& call)> hook)
{
    g_hook = std::move(hook);
}

// ---- the window -------------------------------------------------------------------------------------------

TRACED void ORBCustomMainWindow::cSetStrechEdges(int edges)
{
    note(QString("cSetStrechEdges(%1)").arg(edges));
    passedOn<void(ORBCustomMainWindow*, int)>("_ZN19ORBCustomMainWindow15cSetStrechEdgesEi")(this, edges);
}

TRACED void ORBCustomMainWindow::cEnableDefualtShadow()
{
    note("cEnableDefualtShadow()");
    passedOn<void(ORBCustomMainWindow*)>("_ZN19ORBCustomMainWindow20cEnableDefualtShadowEv")(this);
}

TRACED void ORBCustomMainWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        note(QString("%1 changeEvent").arg(metaObject()->className()));
    passedOn<void(ORBCustomMainWindow*, QEvent*)>("_ZN19ORBCustomMainWindow11changeEventEP6QEvent")(this,
                                                                                                    event);
}

TRACED void ORBCustomTitleBar::cSetTitleText(const QString& text)
{
    note("cSetTitleText");
    passedOn<void(ORBCustomTitleBar*, const QString&)>("_ZN17ORBCustomTitleBar13cSetTitleTextERK7QString")(
        this, text);
}

TRACED void ORBCustomTitleBar::cSetTitleControls(int controls)
{
    note(QString("cSetTitleControls(%1)").arg(controls));
    passedOn<void(ORBCustomTitleBar*, int)>("_ZN17ORBCustomTitleBar17cSetTitleControlsEi")(this, controls);
}

TRACED void ORBCustomTitleBar::cSetTitleIcon(const QString& image)
{
    note(QString("cSetTitleIcon(%1)").arg(image));
    passedOn<void(ORBCustomTitleBar*, const QString&)>("_ZN17ORBCustomTitleBar13cSetTitleIconERK7QString")(
        this, image);
}

// ---- controls ---------------------------------------------------------------------------------------------

TRACED void ORBCustomPushButton::cSetControlClickEvent(bool control)
{
    note(named("cSetControlClickEvent", this) + (control ? "(true)" : "(false)"));
    passedOn<void(ORBCustomPushButton*, bool)>("_ZN19ORBCustomPushButton21cSetControlClickEventEb")(this,
                                                                                                    control);
}

TRACED void ORBCustomLineWidget::cSetLineType(int type)
{
    note(QString("cSetLineType(%1)").arg(type));
    passedOn<void(ORBCustomLineWidget*, int)>("_ZN19ORBCustomLineWidget12cSetLineTypeEi")(this, type);
}

TRACED void ORBCustomTableWidget::connetSectionResized(bool connected)
{
    const bool isOfOurs = horizontalHeader()->inherits("ORBCustomCheckHeaderView");
    note(QString("connetSectionResized(%1)%2")
             .arg(connected ? "true" : "false", isOfOurs ? "" : ", of another header"));
    passedOn<void(ORBCustomTableWidget*, bool)>("_ZN20ORBCustomTableWidget20connetSectionResizedEb")(
        this, connected);
}

TRACED void ORBCustomLoadingDialog::SetLabelText(const QString& text)
{
    note(QString("SetLabelText(%1)").arg(text));
    passedOn<void(ORBCustomLoadingDialog*, const QString&)>(
        "_ZN22ORBCustomLoadingDialog12SetLabelTextERK7QString")(this, text);
}

// ---- the tree ---------------------------------------------------------------------------------------------

TRACED void VELADeviceTree::setVisibleItemTypes(const QList<int>& types)
{
    QStringList numbers;
    for (const int type : types)
        numbers << QString::number(type);
    note(QString("setVisibleItemTypes(%1)").arg(numbers.join(", ")));
    passedOn<void(VELADeviceTree*, const QList<int>&)>(
        "_ZN14VELADeviceTree19setVisibleItemTypesERK5QListIiE")(this, types);
}

TRACED void VELADeviceTree::updateDeviceTypes(unsigned int types, bool enable)
{
    note(QString("updateDeviceTypes(%1, %2)").arg(types).arg(enable ? "true" : "false"));
    passedOn<void(VELADeviceTree*, unsigned int, bool)>("_ZN14VELADeviceTree17updateDeviceTypesEjb")(
        this, types, enable);
}

TRACED QTreeWidgetItem* VELADeviceTree::findItem(int nodeType, long id) const
{
    note(QString("findItem(%1, %2)").arg(nodeType).arg(id));
    return passedOn<QTreeWidgetItem*(const VELADeviceTree*, int, long)>("_ZNK14VELADeviceTree8findItemEil")(
        this, nodeType, id);
}

// ---- questions for paths ----------------------------------------------------------------------------------

TRACED QString ORBCustom::getExistingDirectory(QWidget* parent, const QString& caption,
                                               const QString& directory, QFileDialog::Options options)
{
    note(QString("getExistingDirectory, options %1").arg(int(options)));
    return passedOn<QString(QWidget*, const QString&, const QString&, QFileDialog::Options)>(
        "_ZN9ORBCustom20getExistingDirectoryEP7QWidgetRK7QStringS4_6QFlagsIN11QFileDialog6OptionEE")(
        parent, caption, directory, options);
}

TRACED QString VELAInterface::getOpenFileName(QWidget* parent, const QString& caption,
                                              const QString& directory, const QString& filter,
                                              QString* selectedFilter, QFileDialog::Options options)
{
    note(QString("getOpenFileName, %1, options %2")
             .arg(selectedFilter ? "a selected filter" : "no selected filter")
             .arg(int(options)));
    return passedOn<QString(QWidget*, const QString&, const QString&, const QString&, QString*,
                            QFileDialog::Options)>(
        "_ZN13VELAInterface15getOpenFileNameEP7QWidgetRK7QStringS4_S4_PS2_6QFlagsIN11QFileDialog6OptionEE")(
        parent, caption, directory, filter, selectedFilter, options);
}

// ---- constructors: functions of their symbols' names, called with the object to be ------------------------

extern "C" {

TRACED void tracedPushButton(void* self, QWidget* parent,
                             int style) asm("_ZN19ORBCustomPushButtonC1EP7QWidgeti");
TRACED void tracedPushButton(void* self, QWidget* parent, int style)
{
    note(QString("ORBCustomPushButton, style %1").arg(style));
    passedOn<void(void*, QWidget*, int)>("_ZN19ORBCustomPushButtonC1EP7QWidgeti")(self, parent, style);
}

TRACED void tracedCheckBox(void* self, QWidget* parent, int style) asm("_ZN17ORBCustomCheckBoxC1EP7QWidgeti");
TRACED void tracedCheckBox(void* self, QWidget* parent, int style)
{
    note(QString("ORBCustomCheckBox, style %1").arg(style));
    passedOn<void(void*, QWidget*, int)>("_ZN17ORBCustomCheckBoxC1EP7QWidgeti")(self, parent, style);
}

TRACED void tracedLoadingDialog(void* self, QWidget* parent) asm("_ZN22ORBCustomLoadingDialogC1EP7QWidget");
TRACED void tracedLoadingDialog(void* self, QWidget* parent)
{
    note("ORBCustomLoadingDialog");
    passedOn<void(void*, QWidget*)>("_ZN22ORBCustomLoadingDialogC1EP7QWidget")(self, parent);
}

TRACED void
tracedSaveDone(void* self, QWidget* parent, const QString& title,
               const QString& openText) asm("_ZN24ORBCustomSaveDoneHintDlgC1EP7QWidgetRK7QStringS4_");
TRACED void tracedSaveDone(void* self, QWidget* parent, const QString& title, const QString& openText)
{
    note(QString("ORBCustomSaveDoneHintDlg, \"%1\", \"%2\"").arg(title, openText));
    passedOn<void(void*, QWidget*, const QString&, const QString&)>(
        "_ZN24ORBCustomSaveDoneHintDlgC1EP7QWidgetRK7QStringS4_")(self, parent, title, openText);
}

TRACED void tracedSettings(void* self, const QString& file, QSettings::Format format,
                           QObject* parent) asm("_ZN9QSettingsC1ERK7QStringNS_6FormatEP7QObject");
TRACED void tracedSettings(void* self, const QString& file, QSettings::Format format, QObject* parent)
{
    note(QString("QSettings, parent %1").arg(parent ? parent->metaObject()->className() : "none"));
    passedOn<void(void*, const QString&, QSettings::Format, QObject*)>(
        "_ZN9QSettingsC1ERK7QStringNS_6FormatEP7QObject")(self, file, format, parent);
}

} // extern "C"
