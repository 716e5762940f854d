// The discovery of the host kit for the folders of a command line, and the texts of its lists in UTF-8.

#ifndef ZRMODULE_DISCOVERY_H
#define ZRMODULE_DISCOVERY_H

#include <string>
#include <vector>

#include "zr/host.hpp"
#include "zr/library.hpp"
#include "zr/ptr.hpp"
#include "zr/string.hpp"
#include "zr/uuid.hpp"
#include "zrmodule/output.h"

inline std::string Utf8(const WCHAR* text) { return zr::String(text).ToUtf8(); }

/// An identifier as manifests and zr::Uuid want it, without braces.
inline std::string Utf8(const ZRUUID& id) { return zr::Uuid(id).ToString().ToUtf8().substr(1, 36); }

/// MakeDiscovery makes a discovery of folders; of those where hosts look if the list is empty. Throws zr::Error, or
/// std::runtime_error for a path that is not UTF-8.
[[nodiscard]] zr::Ptr<IZrComponentDiscovery> MakeDiscovery(const std::vector<std::string>& folders,
                                                           const std::string& configurationFile = {});

/// Reports a problem of a discovery as a finding of the kind "manifest".
void ReportProblem(COutput& output, const ZrHostProblem& problem);

#endif
