# One place that adds a test program: links GoogleTest and the right test main,
# runs offscreen, and lets CTest discover every test case.
find_package(GTest REQUIRED)
include(GoogleTest)

# Every test runs a second time on a PostgreSQL server of its own, made for the
# run by scripts/pg-server and removed after it (PRESTKT_PG tells the tests
# where it is; each test's database is a schema of that server).
option(PRESTKT_TEST_POSTGRES "Run the tests on PostgreSQL as well" ON)
string(MD5 PRESTKT_PG_HASH "${CMAKE_BINARY_DIR}")
string(SUBSTRING "${PRESTKT_PG_HASH}" 0 12 PRESTKT_PG_HASH)
set(PRESTKT_PG_DIR "/tmp/prestkt-pg-${PRESTKT_PG_HASH}")
set(PRESTKT_PG "host=${PRESTKT_PG_DIR} port=5432 dbname=prestkt user=prestkt")
if(PRESTKT_TEST_POSTGRES)
  add_test(NAME pg.server.start COMMAND bash -c
    "'${PROJECT_SOURCE_DIR}/scripts/pg-server' stop '${PRESTKT_PG_DIR}' 2>/dev/null; '${PROJECT_SOURCE_DIR}/scripts/pg-server' start '${PRESTKT_PG_DIR}'")
  set_tests_properties(pg.server.start PROPERTIES FIXTURES_SETUP postgres LABELS POSTGRES)
  add_test(NAME pg.server.stop COMMAND "${PROJECT_SOURCE_DIR}/scripts/pg-server" stop "${PRESTKT_PG_DIR}")
  set_tests_properties(pg.server.stop PROPERTIES FIXTURES_CLEANUP postgres LABELS POSTGRES)
endif()

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
    PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" LABELS ${kind}
    DISCOVERY_TIMEOUT 60)
  # The discovery hands each property one value: the server goes as an argument.
  if(PRESTKT_TEST_POSTGRES)
    gtest_discover_tests(${name} TEST_PREFIX "pg." EXTRA_ARGS "--pg=${PRESTKT_PG}"
      PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" LABELS POSTGRES FIXTURES_REQUIRED postgres
      DISCOVERY_TIMEOUT 60)
  endif()
endfunction()
