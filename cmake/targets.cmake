# orsanta_layer(<name> <sources...>)
# One layer of the library: the static library orsanta_<name>.
function(orsanta_layer name)
  add_library(orsanta_${name} STATIC ${ARGN})
  target_include_directories(orsanta_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/include)
endfunction()

# orsanta_tests(<name> SOURCES <sources...> LIBRARIES <link libraries...>)
# The test program test_<name>.
function(orsanta_tests name)
  cmake_parse_arguments(PARSE_ARGV 1 of "" "" "SOURCES;LIBRARIES")
  add_executable(test_${name} ${of_SOURCES})
  target_include_directories(test_${name} PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(test_${name} PRIVATE ${of_LIBRARIES} orsanta_simulated_clock GTest::gmock GTest::gtest_main)
  if(ORSANTA_SANITIZE STREQUAL "thread")
    set(what_is_not_ours TSAN_OPTIONS=history_size=7:suppressions=${CMAKE_SOURCE_DIR}/tests/tsan.supp)
  else()
    set(what_is_not_ours LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp)
  endif()
  # No display but one that a test starts: on a developer's own, the processes that tests end would show their reports.
  gtest_discover_tests(test_${name} TEST_PREFIX ${name}. DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       PROPERTIES TIMEOUT 240 ENVIRONMENT "${what_is_not_ours};DISPLAY=;WAYLAND_DISPLAY=")
endfunction()

# orsanta_tests_at_1_ms(<name> <filter>)
# Some tests of test_<name> once more, on a simulated motion server that takes a millisecond for each instruction. Tests
# that hold times to the millisecond stay out.
function(orsanta_tests_at_1_ms name filter)
  add_test(NAME ${name}.at_1_ms COMMAND test_${name} --gtest_filter=${filter})
  set_tests_properties(${name}.at_1_ms PROPERTIES TIMEOUT 240 ENVIRONMENT ORSANTA_TEST_INSTRUCTION_MS=1)
endfunction()
