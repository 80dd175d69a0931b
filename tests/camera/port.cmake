foreach(subject discovery gvcp_port_emulator gvcp_port_wire)
    ie_add_test(${subject}_test LABEL camera
        SOURCES ${subject}_test.cpp GvcpClient.h ScriptedCamera.h
        LIBRARIES kx_ports camera_emulator_core GTest::gtest_main)
endforeach()
ie_add_test(control_thread_test LABEL camera
    SOURCES control_thread_test.cpp
    LIBRARIES kx_ports GTest::gtest_main)
ie_add_test(other_network_test LABEL camera
    SOURCES other_network_test.cpp
    LIBRARIES kx_ports camera_emulator_core GTest::gtest_main)
ie_add_test(gencp_port_test LABEL camera
    SOURCES gencp_port_test.cpp
    LIBRARIES kx_ports GTest::gtest_main)
add_subdirectory(clser_libraries)
ie_add_test(serial_port_test LABEL camera
    SOURCES serial_port_test.cpp ClserStage.h
    LIBRARIES kx_ports camera_emulator_core GTest::gtest_main)
ie_add_test(serial_discovery_test LABEL camera
    SOURCES serial_discovery_test.cpp ClserStage.h
    LIBRARIES KXCameraControl camera_emulator_core GTest::gtest_main)
foreach(test serial_port_test serial_discovery_test)
    target_compile_definitions(${test} PRIVATE CLSER_LIBRARIES="${CMAKE_BINARY_DIR}/tests/clser")
    add_dependencies(${test} clseremu clserplain clserold ie_gentl_host)
endforeach()
pkg_check_modules(LIBUSB REQUIRED IMPORTED_TARGET libusb-1.0)
ie_add_test(usb3_port_test LABEL camera
    SOURCES usb3_port_test.cpp UsbFixture.h
    LIBRARIES kx_api kx_core usb_stage PkgConfig::LIBUSB GTest::gtest_main)
ie_add_test(usb3_wire_test LABEL camera
    SOURCES usb3_wire_test.cpp
    LIBRARIES kx_ports usb_stage PkgConfig::LIBUSB GTest::gtest_main)
ie_add_test(usb3_discovery_test LABEL camera
    SOURCES usb3_discovery_test.cpp UsbFixture.h
    LIBRARIES KXCameraControl usb_stage GTest::gtest_main)
