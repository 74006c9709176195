# Packaging tests (tests/packaging/check.sh): the installed files validated by their tools, the
# package made from this build tree with cpack, checked with lintian, listed and run from a
# throwaway root. A missing tool makes a test skip with a message.
set(QUENLO_PACKAGING_CHECK ${CMAKE_CURRENT_SOURCE_DIR}/tests/packaging/check.sh)
set(QUENLO_PACKAGING_OUT ${CMAKE_CURRENT_BINARY_DIR}/packaging)
set(QUENLO_DIST ${CMAKE_CURRENT_SOURCE_DIR}/dist/linux)

add_test(NAME package_build COMMAND ${QUENLO_PACKAGING_CHECK} build ${CMAKE_CURRENT_BINARY_DIR} ${QUENLO_PACKAGING_OUT})
add_test(NAME package_desktop_entry COMMAND ${QUENLO_PACKAGING_CHECK} desktop ${QUENLO_DIST}/${QUENLO_APP_ID}.desktop)
add_test(NAME package_metainfo COMMAND ${QUENLO_PACKAGING_CHECK} metainfo
  ${QUENLO_DIST}/${QUENLO_APP_ID}.metainfo.xml ${PROJECT_VERSION})
add_test(NAME package_manpage COMMAND ${QUENLO_PACKAGING_CHECK} manpage ${QUENLO_DIST}/quenlo.1 ${PROJECT_VERSION})
set(QUENLO_PACKAGING_TESTS package_build package_desktop_entry package_metainfo package_manpage)
foreach(check lintian contents install)
  add_test(NAME package_${check} COMMAND ${QUENLO_PACKAGING_CHECK} ${check} ${QUENLO_PACKAGING_OUT})
  set_tests_properties(package_${check} PROPERTIES FIXTURES_REQUIRED quenlo_deb)
  list(APPEND QUENLO_PACKAGING_TESTS package_${check})
endforeach()
set_tests_properties(package_build PROPERTIES FIXTURES_SETUP quenlo_deb)
set_tests_properties(${QUENLO_PACKAGING_TESTS} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300 LABELS packaging)
