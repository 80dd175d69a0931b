# The common library under the jobs, replaced by one that records. It passes calls on to the real functions, whose
# sources are compiled here under another namespace's name: two definitions of one function cannot be linked.
get_target_property(suite_tools_sources SuiteTools SOURCES)
get_target_property(suite_tools_folder SuiteTools SOURCE_DIR)
get_target_property(suite_tools_definitions SuiteTools COMPILE_DEFINITIONS)
list(FILTER suite_tools_sources INCLUDE REGEX "\\.cpp$")
list(TRANSFORM suite_tools_sources PREPEND "${suite_tools_folder}/")
add_library(renamed_suite_tools STATIC ${suite_tools_sources})
target_compile_definitions(renamed_suite_tools PRIVATE ${suite_tools_definitions} VELAInterface=RealSuiteTools)
target_link_libraries(renamed_suite_tools PUBLIC SuiteTools_headers PRIVATE formula)

add_library(recording_suite_tools STATIC RecordingSuiteTools.cpp RecordingSuiteTools.h)
target_include_directories(recording_suite_tools PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
target_link_libraries(recording_suite_tools PUBLIC SuiteTools_headers PRIVATE renamed_suite_tools)
