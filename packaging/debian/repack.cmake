# SPDX-License-Identifier: MIT
# CPack runs this on the packages that it has made. CPack's maintainer scripts call ldconfig, which the trigger of the
# packages does already, and its control files lack the field Multi-Arch: both are mended here.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(content ${package}.content)
    file(REMOVE_RECURSE ${content})
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${content} COMMAND_ERROR_IS_FATAL ANY)
    file(GLOB scripts ${content}/DEBIAN/post*)
    foreach(script IN LISTS scripts)
        file(READ ${script} text)
        if(text MATCHES "ldconfig")
            file(REMOVE ${script})
        endif()
    endforeach()
    file(READ ${content}/DEBIAN/control control)
    # Libraries of several architectures can be installed together; a program serves those of any architecture. An extension
    # of Python does neither.
    if(control MATCHES "^Package: lib")
        string(REPLACE "\nArchitecture:" "\nMulti-Arch: same\nArchitecture:" control "${control}")
    elseif(NOT control MATCHES "^Package: python")
        string(REPLACE "\nArchitecture:" "\nMulti-Arch: foreign\nArchitecture:" control "${control}")
    endif()
    file(WRITE ${content}/DEBIAN/control "${control}")
    execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build ${content} ${package}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${content})
endforeach()
