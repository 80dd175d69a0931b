#include "DevListMgr/VELADeviceTree.h"

#include "DeviceScanner.h"

#include "camera_line/Presence.h"
#include "camera_line/RecordTexts.h"

#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <QTextDocument>

#include <cstring>
#include <optional>
#include <utility>

namespace
{

int interfaceType(unsigned int transport)
{
    switch (transport) {
    case KX_TRANSPORT_USB3:
        return VELADeviceTree::NodeUsb3Interface;
    case KX_TRANSPORT_CAMERA_LINK:
        return VELADeviceTree::NodeCameraLinkInterface;
    default:
        return VELADeviceTree::NodeGigEInterface;
    }
}

QString cameraLabel(const KX_DeviceInfo& device)
{
    const QString model = camera_line::modelField(device).text();
    const QString user = camera_line::userNameField(device).text();
    const QString serial = camera_line::serialField(device).text();
    const QString name = user.isEmpty() ? model : user;
    return serial.isEmpty() ? name : QString("%1 (%2)").arg(name, serial);
}

QIcon dot(const QColor& color)
{
    QIcon icon;
    for (const int size : {16, 32, 48}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(color);
        painter.setPen(Qt::NoPen);
        painter.drawEllipse(QRectF(size * 0.25, size * 0.25, size * 0.5, size * 0.5));
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

class VELADeviceTree::Private
{
public:
    struct Camera
    {
        QTreeWidgetItem* item = nullptr;
        KX_DeviceEntry entry;
    };

    explicit Private(VELADeviceTree& tree) : m_tree(tree) {}

    void takeScan(const DeviceEntries& entries);
    void setTexts();

    VELADeviceTree& m_tree;
    DeviceScanner* m_scanner = nullptr;
    camera_line::Presence m_presence;
    QMap<int, Camera> m_cameras;
    QList<int> m_visibleTypes;
    QTreeWidgetItem* m_all = nullptr;
    unsigned int m_types = 0;

private:
    void apply(const DeviceEntries& entries);
    void add(int id, const KX_DeviceEntry& entry);
    void update(Camera& camera, const KX_DeviceEntry& entry);
    void remove(int id);
    void fill(QTreeWidgetItem* item, int id, const KX_DeviceEntry& entry);
    QTreeWidgetItem* parentFor(const KX_DeviceEntry& entry);
    QTreeWidgetItem* group(QTreeWidgetItem* parent, int type, const QString& key);
    const QIcon& stateIcon(unsigned int availability) const;
    QString transportText(unsigned int transport) const;
    void removeEmptyGroups(QTreeWidgetItem* item);

    // One for all cameras and for good: Qt keeps what it makes of each for a while, in all sizes.
    const QIcon m_freeIcon = dot("#00B84A");
    const QIcon m_inUseIcon = dot("#FAB700");
    const QIcon m_unreachableIcon = dot("#A0A0A0");
    bool m_isApplying = false;
    std::optional<DeviceEntries> m_next;
};

// Who is told of a camera may open a modal dialog, and the next scan comes while that is open: the newest one
// waits until the items of this one are done.
void VELADeviceTree::Private::takeScan(const DeviceEntries& entries)
{
    m_next = entries;
    if (m_isApplying)
        return;
    m_isApplying = true;
    while (m_next)
        apply(*std::exchange(m_next, std::nullopt));
    m_isApplying = false;
}

void VELADeviceTree::Private::apply(const DeviceEntries& entries)
{
    std::vector<KX_DeviceInfo> answers;
    for (const KX_DeviceEntry& entry : entries)
        answers.push_back(entry.info);
    // Nobody is looked for: who does not answer is gone at once.
    const camera_line::Presence::Look look =
        m_presence.look(answers, m_types == 0 ? 1 : camera_line::kMissesUntilGone);
    for (size_t i = 0; i < entries.size(); ++i) {
        if (look.answers[i].isNew)
            add(look.answers[i].id, entries[i]);
        else
            update(m_cameras[look.answers[i].id], entries[i]);
    }
    for (const int id : look.gone)
        remove(id);
}

void VELADeviceTree::Private::add(int id, const KX_DeviceEntry& entry)
{
    QTreeWidgetItem* item = new QTreeWidgetItem(parentFor(entry));
    item->setData(0, RoleNodeType, NodeCamera);
    fill(item, id, entry);
    m_cameras.insert(id, {item, entry});
    emit m_tree.sigNewDeviceItem(item);
}

void VELADeviceTree::Private::update(Camera& camera, const KX_DeviceEntry& entry)
{
    if (std::memcmp(&camera.entry, &entry, sizeof entry) == 0)
        return;
    const bool moved = std::strcmp(camera.entry.interfaceName, entry.interfaceName) != 0;
    const int id = camera.item->data(0, RoleDevice).value<StructDeviceInfo>().nDeviceID;
    camera.entry = entry;
    if (moved) {
        QTreeWidgetItem* before = camera.item->parent();
        const bool wasCurrent = m_tree.currentItem() == camera.item;
        before->removeChild(camera.item);
        parentFor(entry)->addChild(camera.item);
        if (wasCurrent)
            m_tree.setCurrentItem(camera.item);
        removeEmptyGroups(before);
    }
    fill(camera.item, id, entry);
    emit m_tree.sigUpdateDeviceItem(camera.item);
}

void VELADeviceTree::Private::remove(int id)
{
    const Camera camera = m_cameras.take(id);
    emit m_tree.sigDeleteDeviceItem(camera.item);
    QTreeWidgetItem* parent = camera.item->parent();
    delete camera.item;
    removeEmptyGroups(parent);
}

void VELADeviceTree::Private::fill(QTreeWidgetItem* item, int id, const KX_DeviceEntry& entry)
{
    StructDeviceInfo device;
    device.nDeviceID = id;
    device.nStatus = int(entry.availability); // 1 free, 2 in use, else unreachable
    device.stDeviceInfo = entry.info;
    item->setData(0, RoleDevice, QVariant::fromValue(device));
    item->setText(0, cameraLabel(entry.info));
    // Words of a camera are never to be read as markup, which tips are that look like it.
    const QString label = item->text(0);
    item->setToolTip(0, Qt::mightBeRichText(label) ? Qt::convertFromPlainText(label, Qt::WhiteSpaceNormal)
                                                   : label);
    item->setIcon(0, stateIcon(entry.availability));
}

// A dot in the colour of the camera's state.
const QIcon& VELADeviceTree::Private::stateIcon(unsigned int availability) const
{
    return availability == KX_AVAILABILITY_FREE     ? m_freeIcon
           : availability == KX_AVAILABILITY_IN_USE ? m_inUseIcon
                                                    : m_unreachableIcon;
}

// The nearest group that is shown: all devices, transport, interface.
QTreeWidgetItem* VELADeviceTree::Private::parentFor(const KX_DeviceEntry& entry)
{
    QTreeWidgetItem* parent = m_all;
    if (m_visibleTypes.contains(NodeTransport))
        parent = group(parent, NodeTransport, QString::number(entry.info.transportType));
    const int type = interfaceType(entry.info.transportType);
    if (m_visibleTypes.contains(type))
        parent = group(parent, type, QString::fromUtf8(entry.interfaceName));
    return parent;
}

QTreeWidgetItem* VELADeviceTree::Private::group(QTreeWidgetItem* parent, int type, const QString& key)
{
    constexpr int keyRole = Qt::UserRole + 2;
    for (int i = 0; i < parent->childCount(); ++i)
        if (parent->child(i)->data(0, RoleNodeType) == type && parent->child(i)->data(0, keyRole) == key)
            return parent->child(i);
    QTreeWidgetItem* item = new QTreeWidgetItem(parent);
    item->setData(0, RoleNodeType, type);
    item->setData(0, keyRole, key);
    item->setText(0, type == NodeTransport ? transportText(key.toUInt()) : key);
    item->setExpanded(true);
    parent->setExpanded(true);
    return item;
}

QString VELADeviceTree::Private::transportText(unsigned int transport) const
{
    switch (transport) {
    case KX_TRANSPORT_GIGE:
        return VELADeviceTree::tr("GigE Vision");
    case KX_TRANSPORT_USB3:
        return VELADeviceTree::tr("USB3 Vision");
    case KX_TRANSPORT_CAMERA_LINK:
        return VELADeviceTree::tr("Camera Link");
    default:
        return VELADeviceTree::tr("Other");
    }
}

void VELADeviceTree::Private::removeEmptyGroups(QTreeWidgetItem* item)
{
    while (item && item != m_all && item->childCount() == 0) {
        QTreeWidgetItem* parent = item->parent();
        if (m_tree.currentItem() == item)
            m_tree.setCurrentItem(m_all);
        delete item;
        item = parent;
    }
}

void VELADeviceTree::Private::setTexts()
{
    m_all->setText(0, VELADeviceTree::tr("All Devices"));
    m_tree.setAccessibleName(VELADeviceTree::tr("Device Tree"));
    for (int i = 0; i < m_all->childCount(); ++i)
        if (m_all->child(i)->data(0, RoleNodeType) == NodeTransport)
            m_all->child(i)->setText(0, transportText(m_all->child(i)->data(0, Qt::UserRole + 2).toUInt()));
}

VELADeviceTree::VELADeviceTree(QWidget* parent) : QTreeWidget(parent), d(new Private(*this))
{
    setHeaderHidden(true);
    setColumnCount(1);
    setSelectionMode(QAbstractItemView::SingleSelection);
    d->m_visibleTypes = {NodeGigEInterface, NodeUsb3Interface, NodeCameraLinkInterface,
                         NodeCamera,        NodeTransport,     NodeAllDevices};
    d->m_all = new QTreeWidgetItem(this);
    d->m_all->setData(0, RoleNodeType, NodeAllDevices);
    d->m_all->setExpanded(true);
    d->setTexts();

    d->m_scanner = new DeviceScanner(this);
    // Queued: what a scan finds is announced from the event loop only.
    connect(
        d->m_scanner, &DeviceScanner::scanned, this,
        [this](const DeviceEntries& entries) { d->takeScan(entries); }, Qt::QueuedConnection);
}

VELADeviceTree::~VELADeviceTree()
{
    delete d->m_scanner;
}

void VELADeviceTree::setVisibleItemTypes(const QList<int>& types)
{
    d->m_visibleTypes = types;
}

void VELADeviceTree::updateDeviceTypes(unsigned int types, bool enable)
{
    d->m_types = enable ? types | KX_TRANSPORT_CAMERA_LINK : 0;
    d->m_scanner->setTransports(d->m_types);
    if (!d->m_scanner->isRunning())
        d->m_scanner->start();
}

QTreeWidgetItem* VELADeviceTree::findItem(int nodeType, long id) const
{
    if (nodeType == NodeAllDevices)
        return id == -1 ? d->m_all : nullptr;
    return nodeType == NodeCamera ? findCameraItem(id) : nullptr;
}

QTreeWidgetItem* VELADeviceTree::findCameraItem(long deviceId) const
{
    return d->m_cameras.value(int(deviceId)).item;
}

void VELADeviceTree::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange && d)
        d->setTexts();
    QTreeWidget::changeEvent(event);
}
