# Compiles a use of the public header in each language that it is for.
set(strict -Wall -Wextra -pedantic -Werror -fsyntax-only -I${SOURCE}/include)
foreach(standard c89 c99 c11 c17 c++98 c++11 c++14 c++17 c++20)
  set(compiler ${CC} -x c)
  if(standard MATCHES "^c\\+\\+")
    set(compiler ${CXX} -x c++)
  endif()
  execute_process(COMMAND ${compiler} -std=${standard} ${strict} ${SOURCE}/tests/readme/header_use.c
                  RESULT_VARIABLE status ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    message(SEND_ERROR "${standard}: ${errors}")
  endif()
endforeach()
