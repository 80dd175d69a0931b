# USB3 Vision by libusb, Camera Link behind serial lines, and GenTL producers in a process of their own.
pkg_check_modules(LIBUSB REQUIRED IMPORTED_TARGET libusb-1.0)
target_sources(kx_ports PRIVATE
    ports/cameralink/SerialLine.h
    ports/cameralink/LibraryLine.cpp ports/cameralink/LibraryLine.h
    ports/cameralink/SerialPlaces.cpp ports/cameralink/SerialPlaces.h
    ports/cameralink/Terminal_${IE_SYSTEM}.cpp ports/cameralink/Terminal.h
    ports/cameralink/SerialLink.cpp ports/cameralink/SerialLink.h
    ports/cameralink/CameraLinkPort.cpp ports/cameralink/CameraLinkPort.h
    ports/cameralink/SerialDiscovery.cpp ports/cameralink/SerialDiscovery.h
    ports/gentl/GenTlDevices.cpp ports/gentl/GenTlDevices.h
    ports/gentl/GenTlDiscovery.cpp ports/gentl/GenTlDiscovery.h
    ports/gentl/GenTlPort.cpp ports/gentl/GenTlPort.h
    ports/gentl/GenTlSettings.cpp ports/gentl/GenTlSettings.h
    ports/gentl/HostLink.cpp ports/gentl/HostLink.h
    ports/gentl/HostedSearches.cpp ports/gentl/HostedSearches.h
    ports/gentl/HostProcess_${IE_SYSTEM}.cpp ports/gentl/HostProcess.h
    ports/gentl/LibraryPlaces_${IE_SYSTEM}.cpp ports/gentl/LibraryPlaces.h
    ports/gentl/MakersLibraries.cpp ports/gentl/MakersLibraries.h
    ports/gencp/GenCpLink.h
    ports/gencp/GenCpPort.cpp ports/gencp/GenCpPort.h
    ports/usb3/Usb.cpp ports/usb3/Usb.h
    ports/usb3/Usb3Discovery.cpp ports/usb3/Usb3Discovery.h
    ports/usb3/Usb3Port.cpp ports/usb3/Usb3Port.h
    ports/usb3/UsbLink.cpp ports/usb3/UsbLink.h
    ports/usb3/UsbNodes_${IE_SYSTEM}.cpp ports/usb3/UsbNodes.h
    ports/usb3/UsbWatch.cpp ports/usb3/UsbWatch.h)
target_link_libraries(kx_ports PUBLIC gentl PRIVATE PkgConfig::LIBUSB ${IE_DEVICE_LIBRARIES})
target_sources(kx_core PRIVATE camera/ModuleFeatures.cpp camera/ModuleFeatures.h)
# The helper is started by the library, and built with it.
add_dependencies(kx_ports ie_gentl_host)
