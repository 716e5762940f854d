# Adds the target docs: the reference manual as HTML, in html/ of the build folder. It is made from the comments of the
# public headers and from the documents. The target exists only if Doxygen is installed.

find_package(Doxygen 1.9 QUIET)
if(NOT DOXYGEN_FOUND)
  return()
endif()

set(filter "awk -f ${CMAKE_CURRENT_LIST_DIR}/documentation_filter.awk")
set(DOXYGEN_FILTER_PATTERNS "\"*.h=${filter}\"" "\"*.hpp=${filter}\"")
set(DOXYGEN_USE_MDFILE_AS_MAINPAGE "${PROJECT_SOURCE_DIR}/README.md")
set(DOXYGEN_STRIP_FROM_PATH "${PROJECT_SOURCE_DIR}/include" "${PROJECT_SOURCE_DIR}")
set(DOXYGEN_PREDEFINED __cplusplus ZR_API= ZR_MODULE_API= ZRHOST_API= ZR_NOEXCEPT=)   # the manual shows the C++ declarations
set(DOXYGEN_MACRO_EXPANSION YES)
set(DOXYGEN_EXPAND_ONLY_PREDEF YES)
set(DOXYGEN_EXCLUDE_SYMBOLS "ZRCORE_*_H" "ZRHOST_*_H" ZR_EXTERN_C ZR_STATIC_ASSERT ZR_VISIBLE_TYPE "ZR_*_HPP"
  zr::detail "zr::detail::*" std "std::*")
set(DOXYGEN_OPTIMIZE_OUTPUT_FOR_C YES)
set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
set(DOXYGEN_EXTRACT_ALL YES)
set(DOXYGEN_SORT_MEMBER_DOCS NO)
set(DOXYGEN_GENERATE_TREEVIEW YES)
set(DOXYGEN_VERBATIM_HEADERS NO)
set(DOXYGEN_HAVE_DOT NO)
set(DOXYGEN_IMAGE_PATH "${PROJECT_SOURCE_DIR}/docs")
set(DOXYGEN_QUIET YES)
set(DOXYGEN_WARN_IF_INCOMPLETE_DOC NO)   # a parameter whose name says enough needs no @param
set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
# In the order of the tree view: guides for users first.
set(documents README.md docs/cpp.md docs/values.md docs/hosts.md docs/modules.md docs/manifests.md docs/python.md
  docs/debugging.md docs/benchmarks.md examples/README.md examples/template/README.md ARCHITECTURE.md CONTRIBUTING.md
  CHANGELOG.md SECURITY.md)
doxygen_add_docs(docs include/zrcore include/zr include/zrhost ${documents} WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
  COMMENT "Writing the reference to ${CMAKE_CURRENT_BINARY_DIR}/html")
