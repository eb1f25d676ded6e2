# SPDX-License-Identifier: MIT
# Copies the documentation blocks of an interface definition into the header generated from it,
# because widl drops comments.
#
#   cmake -DIDL=file.idl -DHEADER_IN=raw.h -DHEADER_OUT=file.h -P AnnotateHeader.cmake
#
# A block belongs to the declaration that follows it: a type, an interface or a method. A
# block without a place in the header, and a method without a block, are errors.
cmake_minimum_required(VERSION 3.23)

file(READ "${IDL}" rest)
file(READ "${HEADER_IN}" header)

# insert_before(TEXT BLOCK): puts BLOCK in front of the one place of TEXT in the header.
function(insert_before text block)
  string(FIND "${header}" "${text}" first)
  string(FIND "${header}" "${text}" last REVERSE)
  if(first EQUAL -1 OR NOT first EQUAL last)
    message(FATAL_ERROR "${HEADER_IN}: not exactly one \"${text}\" to document")
  endif()
  string(SUBSTRING "${header}" 0 ${first} before)
  string(SUBSTRING "${header}" ${first} -1 after)
  set(header "${before}${block}${after}" PARENT_SCOPE)
endfunction()

set(documented 0)
while(TRUE)
  string(FIND "${rest}" "/**" begin)
  if(begin EQUAL -1)
    break()
  endif()
  string(SUBSTRING "${rest}" ${begin} -1 rest)
  string(FIND "${rest}" "*/" end)
  math(EXPR end "${end} + 2")
  string(SUBSTRING "${rest}" 0 ${end} block)
  string(SUBSTRING "${rest}" ${end} -1 rest)

  if(rest MATCHES "^[ \n]*HRESULT ([A-Za-z0-9_]+)\\(")
    insert_before("virtual HRESULT STDMETHODCALLTYPE ${CMAKE_MATCH_1}(" "${block}\n    ")
    math(EXPR documented "${documented} + 1")
  elseif(rest MATCHES "^[ \n]*typedef enum ([A-Za-z0-9_]+)")
    insert_before("typedef enum ${CMAKE_MATCH_1} {" "\n${block}\n")
  elseif(rest MATCHES "^[ \n]*typedef (struct|union) ([A-Za-z0-9_]+)")
    insert_before("typedef struct ${CMAKE_MATCH_2} {" "\n${block}\n")
  elseif(rest MATCHES "^[ \n]*\\[[^]]*\\][ \n]*interface ([A-Za-z0-9_]+) :")
    insert_before("#ifndef __${CMAKE_MATCH_1}_INTERFACE_DEFINED__" "${block}\n")
  else()
    string(SUBSTRING "${rest}" 0 60 what)
    message(FATAL_ERROR "${IDL}: a documentation block before \"${what}\"")
  endif()
endwhile()

string(REGEX MATCHALL "virtual HRESULT STDMETHODCALLTYPE" methods "${header}")
list(LENGTH methods methods)
if(NOT methods EQUAL documented)
  message(FATAL_ERROR "${IDL}: ${documented} of ${methods} methods have a documentation block")
endif()

file(WRITE "${HEADER_OUT}" "${header}")
