ie_add_test(device_tree_test LABEL gui
    SOURCES device_tree_test.cpp
    LIBRARIES device_tree SuiteTools Qt5::Test)
set_target_properties(device_tree_test PROPERTIES AUTOMOC ON)
target_link_options(device_tree_test PRIVATE -Wl,--no-as-needed)
