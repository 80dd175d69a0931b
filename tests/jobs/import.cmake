# Tests of the features file's import and of the feature-bag jobs.
add_library(import_fixture STATIC ImportFixture.cpp ImportFixture.h)
target_link_libraries(import_fixture PUBLIC job_fixture)

foreach(subject import_checks import_cycles import_registers import_simple import_bad_input import_model)
    ie_add_test(${subject}_test LABEL jobs SOURCES ${subject}_test.cpp LIBRARIES import_fixture)
endforeach()

foreach(subject feature_bag_jobs)
    ie_add_test(${subject}_test LABEL jobs SOURCES ${subject}_test.cpp LIBRARIES job_fixture)
endforeach()
