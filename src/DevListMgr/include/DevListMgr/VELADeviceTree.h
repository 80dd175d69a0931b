// The suite's device tree: finds cameras by itself and announces those that come, change and go.
#pragma once

#include <SuiteTools/StructDeviceInfo.h>

#include <QTreeWidget>

#include <memory>

#if defined(DEVLISTMGR_BUILD_LIBRARY) || !defined(Q_OS_WIN)
#define DEVLISTMGR_API Q_DECL_EXPORT
#else
#define DEVLISTMGR_API Q_DECL_IMPORT // connect() tells signals by their address, which is the library's then
#endif

// User-interface thread. Cameras are looked for on a thread of the tree's own every two seconds, and at once
// when a network interface changes. Announcements come from the event loop, never from inside a call of this
// class.
class DEVLISTMGR_API VELADeviceTree : public QTreeWidget
{
    Q_OBJECT

public:
    enum NodeType
    {
        NodeGigEInterface = 1,
        NodeUsb3Interface = 3,
        NodeCameraLinkInterface = 4,
        NodeCamera = 5,
        NodeTransport = 13,
        NodeAllDevices = 14
    };
    // Item data in column 0.
    enum Role
    {
        RoleNodeType = Qt::UserRole + 1,
        RoleDevice = Qt::UserRole + 3 // StructDeviceInfo, camera items only
    };

    explicit VELADeviceTree(QWidget* parent = nullptr);
    ~VELADeviceTree() override;

    // Group nodes that are made; what would lie below another one lies one level higher. To be called before
    // updateDeviceTypes().
    void setVisibleItemTypes(const QList<int>& types);
    // Transports to look for (KX_TRANSPORT_ mask; Camera Link is always included); `enable` false stops
    // looking.
    void updateDeviceTypes(unsigned int types, bool enable);

    // Null when there is none. NodeAllDevices has the id -1; cameras have their device id.
    QTreeWidgetItem* findItem(int nodeType, long id) const;
    QTreeWidgetItem* findCameraItem(long deviceId) const;

signals:
    void sigNewDeviceItem(QTreeWidgetItem* pItem);
    void sigUpdateDeviceItem(QTreeWidgetItem* pItem);
    // The item can still be read during the signal and is gone after.
    void sigDeleteDeviceItem(QTreeWidgetItem* pItem);

protected:
    void changeEvent(QEvent* event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};
