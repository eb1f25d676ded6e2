# SPDX-License-Identifier: MIT
# What `cmake --install` installs, and the archive that CPack makes of it: the SDK, which works
# wherever it is unpacked. Components: runtime, development, samples, documentation.
include(CMakePackageConfigHelpers)

# What may be run alone, or put beside a client.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)
install(TARGETS QXA64T KORA4Proxies KORA4Panel kora4ctl kora4sim
  RUNTIME DESTINATION bin LIBRARY DESTINATION bin)
install(FILES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/Velto.KORA4.manifest DESTINATION bin)
install(DIRECTORY tools/kora4sim/scenes DESTINATION bin)
install(FILES LICENSE DESTINATION .)

# What a client is built with.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
install(DIRECTORY sdk/include/ DESTINATION include)
install(FILES ${KORA4_IDL_OUT}/veltokora4api.h DESTINATION include)
install(TARGETS kora4_sdk_guids kora4_sdk_proxies ARCHIVE DESTINATION lib)
# The same as sources, which need only the headers, for compilers that do not read these libraries.
install(FILES
  ${KORA4_IDL_OUT}/veltokora4api_i.c
  sdk/proxies/kora4_proxies.c
  ${PROJECT_BINARY_DIR}/sdk/kora4_sdk_proxies_veltokora4api_p.c
  ${PROJECT_BINARY_DIR}/sdk/kora4_sdk_proxies_dlldata.c
  DESTINATION lib/src)
install(FILES idl/veltokora4api.idl DESTINATION idl)
install(FILES ${KORA4_TYPELIB} DESTINATION tlb)
install(FILES ${KORA4_INTEROP} DESTINATION csharp)

set(config ${PROJECT_BINARY_DIR}/package)
set(config_folder lib/cmake/VeltoKORA4)
configure_package_config_file(sdk/package/VeltoKORA4Config.cmake.in
  ${config}/VeltoKORA4Config.cmake INSTALL_DESTINATION ${config_folder})
write_basic_package_version_file(${config}/VeltoKORA4ConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
configure_file(sdk/package/veltokora4.pc.in ${config}/veltokora4.pc @ONLY)
install(FILES ${config}/VeltoKORA4Config.cmake ${config}/VeltoKORA4ConfigVersion.cmake
  cmake/mingw-w64-x86_64.cmake DESTINATION ${config_folder})
install(FILES ${config}/veltokora4.pc DESTINATION lib/pkgconfig)

install(DIRECTORY sdk/samples DESTINATION . COMPONENT samples)

# The folders are named differently in the archive, and some things are only in the project.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME documentation)
install(FILES CHANGELOG.md sdk/package/README.md DESTINATION .)
install(FILES docs/man/kora4ctl.1 docs/man/kora4sim.1 DESTINATION share/man/man1)
install(CODE "
  file(GLOB pages \"${PROJECT_SOURCE_DIR}/docs/*.md\")
  foreach(page IN LISTS pages)
    execute_process(COMMAND_ERROR_IS_FATAL ANY
      COMMAND \"${PERL_EXECUTABLE}\" \"${PROJECT_SOURCE_DIR}/sdk/package/installed_page.pl\"
        \"\${page}\" \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/docs\")
  endforeach()")

set(CPACK_PACKAGE_NAME kora4asl-sdk)
set(CPACK_PACKAGE_VENDOR Velto)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "KORA4 ASL: the settings library, its tools and SDK")
set(CPACK_PACKAGE_FILE_NAME ${CPACK_PACKAGE_NAME}-${PROJECT_VERSION}-win64)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_VERBATIM_VARIABLES ON)
# CPack's own archives hold files in the order of the disk, and their owners.
set(CPACK_GENERATOR External)
set(CPACK_EXTERNAL_ENABLE_STAGING ON)
set(CPACK_EXTERNAL_PACKAGE_SCRIPT ${PROJECT_SOURCE_DIR}/cmake/Kora4Archive.cmake)
set(CPACK_MONOLITHIC_INSTALL ON)
include(CPack)
cpack_add_component(runtime DESCRIPTION "The library, its proxies, the tools")
cpack_add_component(development DESCRIPTION "Headers, libraries, definitions" DEPENDS runtime)
cpack_add_component(samples DESCRIPTION "Clients as source" DEPENDS development)
cpack_add_component(documentation DESCRIPTION "Guides and reference")
