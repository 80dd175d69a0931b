# Tests of the features file's import and of the feature-bag jobs.
add_library(import_fixture STATIC ImportFixture.cpp ImportFixture.h)
target_link_libraries(import_fixture PUBLIC job_fixture)

set(subjects import_checks import_cycles import_registers import_simple import_model)
if(WIN32)
    ie_skip_tests("its bad input is pipes and devices" import_bad_input_test)
else()
    list(APPEND subjects import_bad_input)
endif()
foreach(subject ${subjects})
    ie_add_test(${subject}_test LABEL jobs SOURCES ${subject}_test.cpp LIBRARIES import_fixture)
endforeach()

foreach(subject feature_bag_jobs)
    ie_add_test(${subject}_test LABEL jobs SOURCES ${subject}_test.cpp LIBRARIES job_fixture)
endforeach()
