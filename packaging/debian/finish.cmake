# SPDX-License-Identifier: MIT
# CPack runs this between the installation of the components and the making of packages of them. It adds what Debian wants
# in each package: changelogs and the copyright, in the directory of the package's name, and compressed manual pages.
# $SOURCE_DATE_EPOCH is the date of the entry in the changelog.
function(compress file)
    execute_process(COMMAND gzip -9 --no-name --force ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} key)
    set(name ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
    set(root ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
    set(documentation ${root}/share/doc/${name})
    # Licences and changes are in files of other names here. Nothing that a program opens may be in this directory, since
    # some systems leave documentation out.
    file(REMOVE_RECURSE ${root}/share/doc/datainterface)
    file(MAKE_DIRECTORY ${documentation})
    file(COPY_FILE ${CPACK_DATAINTERFACE_SOURCE}/packaging/debian/copyright ${documentation}/copyright)
    file(COPY_FILE ${CPACK_DATAINTERFACE_SOURCE}/CHANGELOG.md ${documentation}/changelog)
    file(WRITE ${documentation}/changelog.Debian
        "${CPACK_DEBIAN_PACKAGE_SOURCE} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
        "  * Made of the sources of this version, whose changes are in changelog.gz.\n\n"
        " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    # For the lists of documents that some systems have.
    file(GLOB bases ${CPACK_DATAINTERFACE_SOURCE}/packaging/debian/${name}.doc-base)
    foreach(base IN LISTS bases)
        file(MAKE_DIRECTORY ${root}/share/doc-base)
        file(COPY_FILE ${base} ${root}/share/doc-base/${name}.datainterface)
    endforeach()
    # Scripts of Sphinx that the distribution has as a package are links to it.
    file(GLOB scripts ${documentation}/python/_static/*.js)
    foreach(script IN LISTS scripts)
        cmake_path(GET script FILENAME file)
        if(EXISTS /usr/share/javascript/sphinxdoc/1.0/${file})
            file(REMOVE ${script})
            file(CREATE_LINK ../../../../javascript/sphinxdoc/1.0/${file} ${script} SYMBOLIC)
        endif()
    endforeach()
    file(GLOB pages ${root}/share/man/man*/*.[0-9])
    foreach(file ${documentation}/changelog ${documentation}/changelog.Debian ${pages})
        compress(${file})
    endforeach()
    # The modes do not depend on the umask of whoever builds.
    execute_process(COMMAND chmod -R u=rwX,go=rX ${root} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
