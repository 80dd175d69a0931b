// The device table in its window, offscreen: what filling, filtering, ticking, sorting and emptying it costs
// as the number of cameras grows, with all that is drawn of it.
#include "Measure.h"
#include "window/MainWidget.h"

#include <DevListMgr/VELADeviceTree.h>
#include <StyledCtl/ORBCustomCheckHeaderView.h>
#include <StyledCtl/ORBCustomTableWidget.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <cstring>
#include <future>
#include <string>

namespace
{

std::promise<void> g_measured;
const std::shared_future<void> g_end = g_measured.get_future().share();

constexpr int kFewRows = 100;
constexpr int kManyRows = 1000;
constexpr int kMostTimes = 20;

void fill(uint8_t* field, const std::string& text)
{
    std::memcpy(field, text.data(), text.size());
}

// Every other camera on one of two interfaces.
QVector<KX_DeviceEntry> cameras(int count)
{
    QVector<KX_DeviceEntry> entries(count);
    for (int i = 0; i < count; ++i) {
        KX_DeviceEntry& entry = entries[i];
        std::memset(&entry, 0, sizeof entry);
        entry.info.transportType = KX_TRANSPORT_GIGE;
        entry.availability = KX_AVAILABILITY_FREE;
        std::strcpy(entry.interfaceName, i % 2 ? "eth1" : "eth0");
        fill(entry.info.special.gige.modelName, "Model " + std::to_string(i % 7));
        fill(entry.info.special.gige.serialNumber, std::to_string(i * 7919 % 100003));
    }
    return entries;
}

// The window, told of cameras in its search's place.
class Bench
{
public:
    Bench()
    {
        m_window.show();
        m_tree = m_window.findChild<VELADeviceTree*>();
        m_table = m_window.findChild<ORBCustomTableWidget*>();
        m_search = m_tree->findChild<QThread*>();
        handleEvents();
    }

    static void handleEvents()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    void find(const QVector<KX_DeviceEntry>& entries)
    {
        for (int search = 0; search < 2; ++search) // the second miss makes a camera go
            QMetaObject::invokeMethod(m_search, "scanned", Qt::DirectConnection,
                                      Q_ARG(QVector<KX_DeviceEntry>, entries));
        handleEvents();
    }
    // All devices, then one interface.
    void filter()
    {
        m_tree->setCurrentItem(m_tree->findItem(VELADeviceTree::NodeAllDevices, -1));
        handleEvents();
        m_tree->setCurrentItem(m_tree->findCameraItem(1)->parent());
        handleEvents();
    }
    void tickAll(Qt::CheckState state)
    {
        static_cast<ORBCustomCheckHeaderView*>(m_table->horizontalHeader())->setCheckState(0, state, true);
        handleEvents();
    }
    void sort(bool ascending)
    {
        m_window.onSortTableWidget(4, ascending);
        handleEvents();
    }
    int rows() const { return m_table->rowCount(); }

private:
    MainWidget m_window;
    VELADeviceTree* m_tree = nullptr;
    ORBCustomTableWidget* m_table = nullptr;
    QThread* m_search = nullptr;
};

struct Costs
{
    double fill = 0, filter = 0, tick = 0, sort = 0, empty = 0; // seconds
};

Costs measure(Bench& bench, int count)
{
    const QVector<KX_DeviceEntry> entries = cameras(count);
    Costs costs;
    costs.fill = bench::medianSecondsAfter([&] { bench.find({}); }, [&] { bench.find(entries); });
    if (bench.rows() != count)
        std::printf("only %d of %d rows\n", bench.rows(), count);
    costs.filter = bench::medianSeconds([&] { bench.filter(); });
    costs.tick = bench::medianSeconds([&] {
        bench.tickAll(Qt::Checked);
        bench.tickAll(Qt::Unchecked);
    });
    costs.sort = bench::medianSeconds([&] {
        bench.sort(true);
        bench.sort(false);
    });
    costs.empty = bench::medianSecondsAfter([&] { bench.find(entries); }, [&] { bench.find({}); });
    return costs;
}

void print(const char* what, double few, double many)
{
    std::printf(
        "%-10s %4d rows: %8.2f us per row, %4d rows: %8.2f us per row, ratio %6.2f (target: at most %d)\n",
        what, kFewRows, few / kFewRows * 1e6, kManyRows, many / kManyRows * 1e6, many / few, kMostTimes);
}

} // namespace

// In the library's place: this program's own definition comes first. The search waits until all is measured,
// so that it contradicts nothing that the window was told.
extern "C" KX_Status KX_CC_EnumDevices(uint32_t, KX_DeviceEntry*, uint32_t, uint32_t* count)
{
    g_end.wait();
    *count = 0;
    return KX_OK;
}

int main(int argc, char** argv)
{
    const QTemporaryDir folder;
    qputenv("VELA_PROGRAM_DATA", folder.path().toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    Bench bench;
    const Costs few = measure(bench, kFewRows);
    const Costs many = measure(bench, kManyRows);
    print("filling", few.fill, many.fill);
    print("filtering", few.filter, many.filter);
    print("ticking", few.tick, many.tick);
    print("sorting", few.sort, many.sort);
    print("emptying", few.empty, many.empty);
    g_measured.set_value();
}
