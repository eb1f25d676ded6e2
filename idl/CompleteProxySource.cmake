# SPDX-License-Identifier: MIT
# Makes a generated source of proxy code compile by itself, without definitions on the command line.
#
#   cmake -DIN=raw.c -DOUT=file.c -DPREFIX=Prx "-DFILES=a;b" -P CompleteProxySource.cmake
#
# PREFIX goes in front of every public symbol, FILES are the definition files that belong together.
cmake_minimum_required(VERSION 3.23)

file(READ "${IN}" code)
set(head "#define ENTRY_PREFIX ${PREFIX}\n")
set(symbols CStdStubBuffer_Release _purecall gPFactory aProxyFileList GetProxyDllInfo)
list(TRANSFORM FILES APPEND _ProxyFileInfo)
foreach(name IN LISTS symbols FILES)
  string(APPEND head "#define ${name} ${PREFIX}_${name}\n")
endforeach()
# The platform's headers declare these for C++ only. rpcproxy.h must not come yet: its layouts
# depend on settings that the generated code makes first.
string(APPEND head [[

#include <windows.h>

#include <objbase.h>

HRESULT STDMETHODCALLTYPE IUnknown_QueryInterface_Proxy(IUnknown* This, REFIID riid,
                                                        void** ppvObject);
ULONG STDMETHODCALLTYPE IUnknown_AddRef_Proxy(IUnknown* This);
ULONG STDMETHODCALLTYPE IUnknown_Release_Proxy(IUnknown* This);

]])
file(WRITE "${OUT}" "${head}${code}")
