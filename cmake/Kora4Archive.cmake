# SPDX-License-Identifier: MIT
# Run by CPack on what it has installed: makes the archives, whose bytes depend on the files alone.
# The time of everything in them is SOURCE_DATE_EPOCH.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  message(FATAL_ERROR "set SOURCE_DATE_EPOCH to the time of the commit; scripts/package.sh does")
endif()
set(ENV{LC_ALL} C)
set(ENV{TZ} UTC)
set(archive "${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}")
file(REMOVE "${archive}.tar.gz" "${archive}.zip")

# CPack's staging folder is the one folder of the archive.
get_filename_component(parent "${CPACK_TEMPORARY_DIRECTORY}" DIRECTORY)
get_filename_component(folder "${CPACK_TEMPORARY_DIRECTORY}" NAME)
function(run command)
  execute_process(COMMAND bash -euo pipefail -c "${command}" archive "${archive}" "${folder}"
    WORKING_DIRECTORY "${parent}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()
run([[chmod -R u=rwX,go=rX "$2"]])
run([[find "$2" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +]])
run([[tar --format=ustar --sort=name --owner=0 --group=0 --numeric-owner -cf - "$2" | gzip -9n >"$1.tar.gz"]])
run([[find "$2" -type f | sort | zip -q -9 -X -D -@ "$1.zip"]])
set(CPACK_EXTERNAL_BUILT_PACKAGES "${archive}.tar.gz" "${archive}.zip")
