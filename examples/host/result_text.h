// Result codes as words for the user.

#ifndef EXAMPLES_HOST_RESULT_TEXT_H
#define EXAMPLES_HOST_RESULT_TEXT_H

#include <zrcore/base.h>

#include <string>

/// Describe is the name that the library's registry knows a code by, and in brackets what a user can do something
/// about, such as "ZR_R_FILE_NOT_FOUND (the module can't be loaded)". A code without a name is shown as its number.
std::string Describe(ZRRESULT result);

#endif
