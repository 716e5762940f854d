# Provides the targets GTest::gtest and GTest::gtest_main from the installed package. When cross-compiling, they are
# built from the sources in /usr/src/googletest, which Debian's package googletest contains.

if(CMAKE_CROSSCOMPILING)
  set(BUILD_GMOCK OFF)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
  target_compile_options(gtest PRIVATE -w)   # its warnings are not for the authors of ZrCore
else()
  find_package(GTest REQUIRED)
endif()
