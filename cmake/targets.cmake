# orsanta_floor(<name> <folder> <link libraries...>)
# One floor of the house: the static library orsanta_<name> of all sources in the folder.
# Left out are the top of the house (exports, show_panel), which src/CMakeLists.txt links, and the two files that stand on
# support alone and that the station uses (debug_com, time_viewer), which are linked with the station.
function(orsanta_floor name folder)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/(exports|show_panel|debug_com|time_viewer)\\.cpp$")
  if(name STREQUAL station)
    file(GLOB services CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/host/debug_com.cpp
                                         ${CMAKE_SOURCE_DIR}/src/ui/time_viewer.cpp)
    list(APPEND sources ${services})
  endif()
  if(NOT sources)
    file(WRITE ${CMAKE_BINARY_DIR}/empty_${name}.cpp "namespace orsanta {}\n")
    set(sources ${CMAKE_BINARY_DIR}/empty_${name}.cpp)
  endif()
  add_library(orsanta_${name} STATIC ${sources})
  target_include_directories(orsanta_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/include)
  target_link_libraries(orsanta_${name} ${ARGN})
endfunction()

# orsanta_tests(<name> <link libraries...>)
# The test program test_<name> of all *_test.cpp and helpers in the calling folder.
function(orsanta_tests name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(test_${name} ${sources})
  target_include_directories(test_${name} PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/tests)
  target_link_libraries(test_${name} PRIVATE ${ARGN} GTest::gmock GTest::gtest_main)
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
