# A host's project: the README's program, by the CMake package.
cmake_minimum_required(VERSION 3.25)
project(host VERSION 1.0 LANGUAGES C)
find_package(Orsanta 1.0 REQUIRED)
add_executable(host host.c)
target_link_libraries(host PRIVATE Orsanta::orsanta)
