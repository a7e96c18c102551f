# One place that adds a test program: links GoogleTest and the right test main,
# runs offscreen, and lets CTest discover every test case.
find_package(GTest REQUIRED)
include(GoogleTest)

# prestkt_add_test(<name> CORE|WIDGETS SOURCES <files...>)
function(prestkt_add_test name kind)
  cmake_parse_arguments(T "" "" "SOURCES" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  if(kind STREQUAL "CORE")
    target_link_libraries(${name} PRIVATE prestkt_testsupport_core GTest::gtest)
  else()
    target_link_libraries(${name} PRIVATE prestkt_testsupport_widgets GTest::gtest)
  endif()
  gtest_discover_tests(${name}
    PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8" LABELS ${kind}
    DISCOVERY_TIMEOUT 60)
endfunction()
