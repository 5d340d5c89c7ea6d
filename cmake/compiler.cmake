# Warnings, sanitizers and the compiler cache, the same for every target.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -fno-omit-frame-pointer)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  add_compile_options(-Wno-sign-conversion)  # GCC's -Wconversion does not include it
  add_compile_options(-Wthread-safety)       # the rules of support/time/lock.h
endif()
if(ORSANTA_WERROR)
  add_compile_options(-Werror)
endif()
if(ORSANTA_SANITIZE)
  add_compile_options(-fsanitize=${ORSANTA_SANITIZE} -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ORSANTA_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-maybe-uninitialized)  # GCC finds it in the standard library's own regex then
  endif()
endif()
if(ORSANTA_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)  # counts stay right with many threads
  add_link_options(--coverage)
endif()

# The measuring results are promised to the bit: no contraction into fused multiply-add.
add_compile_options(-ffp-contract=off)

find_program(CCACHE ccache)
if(CCACHE)
  # Sources are named relative to the base folder, so that checkouts in other folders share the cache.
  set(launcher ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 ${CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()
