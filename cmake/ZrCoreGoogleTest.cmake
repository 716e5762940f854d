# GTest::gtest and GTest::gtest_main: as the system has them, or, for another system, made of the sources that Debian's
# package googletest holds.

if(CMAKE_CROSSCOMPILING)
  set(BUILD_GMOCK OFF)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
else()
  find_package(GTest REQUIRED)
endif()
