ie_add_test(device_tree_test LABEL gui
    SOURCES device_tree_test.cpp
    LIBRARIES DevListMgr SuiteTools Qt5::Test)
set_target_properties(device_tree_test PROPERTIES AUTOMOC ON ENABLE_EXPORTS ON)
