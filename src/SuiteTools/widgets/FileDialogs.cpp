#include "SuiteTools/SuiteToolsWidgets.h"

#include <QCoreApplication>

namespace
{

VELAInterface::OpenFileHook& hook()
{
    static VELAInterface::OpenFileHook function;
    return function;
}

} // namespace

void VELAInterface::setOpenFileHook(OpenFileHook function)
{
    hook() = std::move(function);
}

QString VELAInterface::getOpenFileName(QWidget* parent, const QString& caption, const QString& directory,
                                       const QString& filter, QString* selectedFilter,
                                       QFileDialog::Options options)
{
    if (hook())
        return hook()(parent, caption, directory, filter);
    const QString title =
        caption.isEmpty() ? QCoreApplication::translate("SuiteTools", "Open File") : caption;
    return QFileDialog::getOpenFileName(parent, title, directory, filter, selectedFilter, options);
}
