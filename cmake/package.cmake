# The Debian package: what it installs beside the program, and its CPack settings.
# scripts/package.sh builds it from a Release tree; the packaging tests build it from the
# test tree (tests/packaging).

set(QUENLO_APP_ID de.qlo.Quenlo)
set(QUENLO_PACKAGE_MAINTAINER "quenlo developers <quenlo@qlo.de>" CACHE STRING
  "Maintainer field of the Debian package")

# Debian wants manual pages and changelogs compressed without a name or time stamp, so that
# two builds give the same bytes. Both are made at configure time: cpack then only copies.
set(QUENLO_PACKAGE_GEN ${CMAKE_CURRENT_BINARY_DIR}/package)
file(MAKE_DIRECTORY ${QUENLO_PACKAGE_GEN})
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  ${CMAKE_CURRENT_SOURCE_DIR}/dist/linux/quenlo.1
  ${CMAKE_CURRENT_SOURCE_DIR}/dist/linux/${QUENLO_APP_ID}.metainfo.xml)

function(quenlo_gzip source target)
  execute_process(COMMAND gzip -9 -n -c ${source} OUTPUT_FILE ${target} RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "gzip could not compress ${source}")
  endif()
endfunction()

# The changelog entry takes its date from the newest release of the metainfo, so that the
# release date is written in one place only.
file(READ ${CMAKE_CURRENT_SOURCE_DIR}/dist/linux/${QUENLO_APP_ID}.metainfo.xml QUENLO_METAINFO)
if(NOT QUENLO_METAINFO MATCHES "<release version=\"[^\"]+\" date=\"([^\"]+)\"")
  message(FATAL_ERROR "dist/linux/${QUENLO_APP_ID}.metainfo.xml names no release")
endif()
execute_process(COMMAND date -u -R -d ${CMAKE_MATCH_1} OUTPUT_VARIABLE QUENLO_RELEASE_DATE
  OUTPUT_STRIP_TRAILING_WHITESPACE)
file(WRITE ${QUENLO_PACKAGE_GEN}/changelog
  "quenlo (${PROJECT_VERSION}) unstable; urgency=medium\n\n"
  "  * Release ${PROJECT_VERSION}; the release notes are in\n"
  "    /usr/share/metainfo/${QUENLO_APP_ID}.metainfo.xml.\n\n"
  " -- ${QUENLO_PACKAGE_MAINTAINER}  ${QUENLO_RELEASE_DATE}\n")
quenlo_gzip(${QUENLO_PACKAGE_GEN}/changelog ${QUENLO_PACKAGE_GEN}/changelog.gz)
quenlo_gzip(${CMAKE_CURRENT_SOURCE_DIR}/dist/linux/quenlo.1 ${QUENLO_PACKAGE_GEN}/quenlo.1.gz)

install(FILES dist/linux/${QUENLO_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${QUENLO_PACKAGE_GEN}/quenlo.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES dist/linux/copyright ${QUENLO_PACKAGE_GEN}/changelog.gz DESTINATION ${CMAKE_INSTALL_DOCDIR})
# The stroke data compiled into the program is under this licence too.
install(FILES res/zh/1/ARPHICPL.TXT DESTINATION ${CMAKE_INSTALL_DOCDIR}/licenses)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quenlo)
set(CPACK_PACKAGE_VENDOR qlo.de)
set(CPACK_PACKAGE_CONTACT "${QUENLO_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "learn to write Chinese characters stroke by stroke")
set(CPACK_PACKAGE_DESCRIPTION [[
quenlo shows a Chinese character large on a practice grid. In watch mode
its strokes paint themselves one after another; in learn mode you trace
each stroke with the mouse, in the right order, and quenlo judges every
trace by its start, its path and its end. A recording plays the
pronunciation, and a translation line gives the meaning in English, German
or Russian. Everything the program shows is compiled into it.]])
set(CPACK_PACKAGE_HOMEPAGE_URL https://qlo.de/quenlo)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION education)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The libraries of the program and of both sound modules (Qt, libpulse0, libmpg123-0) come
# from dpkg-shlibdeps; what Qt loads at run time it cannot see: the SQLite driver for the
# practice history. GStreamer's MP3 decoder is not asked for: it serves only the Qt Multimedia
# module, which is used when the PulseAudio module cannot load, and the libraries that module
# needs are dependencies of the package.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite")
# Without a CJK font the list falls back to the compiled-in writing font; without Qt's
# catalogues the buttons of standard dialogs stay English in German and Russian.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-cjk, qt6-translations-l10n")
include(CPack)

if(QUENLO_BUILD_TESTS AND NOT QUENLO_SANITIZE)
  include(tests/packaging/packaging.cmake)
endif()
