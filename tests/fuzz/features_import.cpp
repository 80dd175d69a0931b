// A features file, imported as the job does it, into a scripted camera.
#include "fuzz/Scripted.h"

#include "jobs/worker/QOperateThread.h"

namespace
{

class Worker : public QOperateThread
{
public:
    using QOperateThread::run; // on this thread
};

bool hasWrites()
{
    for (const tests::TraceEntry& call : tests::Recorder::instance().calls())
        if (call.operation.startsWith("Set") || call.operation == "WriteMemory")
            return true;
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::prepareQt();
    static fuzz::InputFile file(fuzz::newFolder() + "/import.fpk");
    file.write(data, size);
    fuzz::freshCamera();
    StructDeviceInfo device;
    device.nDeviceID = 1;
    device.nStatus = 1;
    device.stDeviceInfo = tests::deviceInfo(KX_TRANSPORT_GIGE, "S1", "Cam");
    Worker worker;
    worker.SetXmlImportJob(device, file.path());
    worker.run();
    fuzz::checkCamera();
    // Another version is remembered only.
    const bool isRefused =
        worker.ErrorCode() == IMPORT_ERR_MODEL || worker.ErrorCode() == IMPORT_ERR_NO_FEATURES;
    fuzz::promise(!isRefused || !hasWrites(),
                  "nothing is written from a file that does not belong to the camera");
    return 0;
}
