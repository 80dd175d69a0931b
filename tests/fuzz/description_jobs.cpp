// A description's text as the export reads it: our own reader against Qt's, then an export of a camera that
// has it.
#include "fuzz/Scripted.h"

#include "jobs/description/DescriptionDom.h"
#include "jobs/file/XmlSafety.h"
#include "jobs/worker/QOperateThread.h"

namespace
{

class Worker : public QOperateThread
{
public:
    using QOperateThread::run; // on this thread
};

void compareReaders(const QString& text)
{
    if (!ie::isSafeToParse(text))
        return;
    QDomDocument ours;
    QDomDocument qts;
    const bool isRead = ie::parseDescription(text, ours);
    fuzz::promise(isRead == qts.setContent(text), "both readers take a text, or none");
    if (isRead)
        fuzz::promise(ours.toString() == qts.toString(), "both readers make the same of a text");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::prepareQt();
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<int>(size));
    compareReaders(QString::fromUtf8(text));
    static const QString folder = fuzz::newFolder();
    fuzz::freshCamera().setDescription(text);
    StructDeviceInfo device;
    device.nDeviceID = 1;
    device.nStatus = 1;
    device.stDeviceInfo = tests::deviceInfo(KX_TRANSPORT_GIGE, "S1", "Cam");
    Worker worker;
    worker.SetXmlExportJob(device, folder);
    worker.run();
    fuzz::checkCamera();
    return 0;
}
