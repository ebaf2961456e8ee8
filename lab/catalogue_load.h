// SPDX-License-Identifier: Apache-2.0
/* Reads catalogue.toml. Strict: a key that is not known, a wrong type, a regular expression that is
 * none, a reference to a list or row that is not there: each is one message with its line. */
#pragma once

#include <memory>

#include "catalogue.h"

namespace lab {

struct CatalogueStorage;

struct LoadedCatalogue {
    std::vector<Group> groups;
    std::vector<Command> commands; /* refer to what `storage` keeps */
    std::shared_ptr<CatalogueStorage> storage;
    std::vector<std::string> errors; /* "NAME:LINE: MESSAGE"; commands count only when none */
};

/* `name` is how messages call the text. */
LoadedCatalogue load_catalogue(std::string_view text, const std::string& name);

} // namespace lab
