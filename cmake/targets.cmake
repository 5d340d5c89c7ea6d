# orsanta_floor(<name> <folder> <link libraries...>)
# One floor of the house: the static library orsanta_<name> of all sources in the folder.
# A folder that holds headers alone becomes an interface library.
function(orsanta_floor name folder)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/(exports|show_panel)\\.cpp$")  # the top of the house, linked by src/CMakeLists.txt
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
  gtest_discover_tests(test_${name} TEST_PREFIX ${name}. DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       PROPERTIES TIMEOUT 240)
endfunction()
