// Opening and closing a camera, and its registers through the port.
#include "KXCameraControl/camera/Camera.h"

#include "KXCameraControl/camera/ParsedDescriptions.h"
#include "KXCameraControl/description/Fetch.h"

namespace kx
{

Camera::Camera(const KX_DeviceInfo& device, std::unique_ptr<Port> port)
    : m_device(device), m_control(m_device), m_port(std::move(port))
{
    m_port->setConnectionLostHandler([this](KX_Status status) { connectionLost(status); });
}

Camera::~Camera()
{
    close();
    // The port's thread calls back into this object: it must be gone before any other member.
    m_port.reset();
}

KX_Status Camera::open(uint32_t accessMode, uint16_t switchOverKey)
{
    m_lost = false;
    if (const KX_Status status = m_port->open(accessMode, switchOverKey))
        return status;
    m_readOnly = accessMode == KX_ACCESS_MONITOR;
    if (!m_readOnly)
        m_control.take();
    const KX_Status status = loadNodes(m_readOnly);
    if (status != KX_OK)
        close();
    return status;
}

// A description that cannot be fetched or used leaves an empty map; only a failed line is a failure.
KX_Status Camera::loadNodes(bool readOnly)
{
    m_descriptionProblem.clear();
    const KX_Status status = fetchDescription(*m_port, m_description, m_descriptionProblem);
    if (status != KX_OK && status != KX_E_DESCRIPTION)
        return status;
    auto table = std::make_shared<const NodeTable>();
    if (m_description) {
        const auto parsed = parsedDescription(*m_description);
        m_descriptionProblem = parsed->problem;
        table = {parsed, &parsed->nodes};
    }
    RegisterLine& line = *this;
    m_nodes = std::make_unique<NodeMap>(std::move(table), line, readOnly);
    return KX_OK;
}

void Camera::close()
{
    m_nodes.reset();
    m_description.reset();
    m_port->close();
    m_control.release();
    m_lost = false;
}

const std::string& Camera::description() const
{
    static const std::string none;
    return m_description ? m_description->text() : none;
}

KX_Status Camera::readBlock(uint64_t address, void* data, size_t size)
{
    return m_port->readMemory(address, data, size);
}

KX_Status Camera::writeBlock(uint64_t address, const void* data, size_t size)
{
    return m_readOnly ? KX_E_GC_ACCESS : m_port->writeMemory(address, data, size);
}

KX_Status Camera::readRegister(uint64_t address, uint32_t& value)
{
    return m_port->readRegister(address, value);
}

KX_Status Camera::writeRegister(uint64_t address, uint32_t value)
{
    return m_readOnly ? KX_E_GC_ACCESS : m_port->writeRegister(address, value);
}

KX_Status Camera::readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values)
{
    return m_port->readRegisters(addresses, values);
}

void Camera::setConnectionLostHandler(KX_ConnectionLostHandler handler, void* user)
{
    const std::lock_guard<std::mutex> lock(m_sideMutex);
    m_lostHandler = handler;
    m_lostUser = user;
}

// On a thread of the port.
void Camera::connectionLost(KX_Status status)
{
    m_lost = true;
    KX_ConnectionLostHandler handler = nullptr;
    void* user = nullptr;
    {
        const std::lock_guard<std::mutex> lock(m_sideMutex);
        handler = m_lostHandler;
        user = m_lostUser;
    }
    if (handler)
        handler(user, status);
}

// A lost port sends nothing; it says why instead.
std::string Camera::lossText()
{
    uint32_t value = 0;
    m_port->readRegister(0, value);
    return m_port->lastError();
}

void Camera::setErrorText(std::string text)
{
    const std::lock_guard<std::mutex> lock(m_sideMutex);
    m_errorText = std::move(text);
}

std::string Camera::errorText() const
{
    const std::lock_guard<std::mutex> lock(m_sideMutex);
    return m_errorText;
}

} // namespace kx
