// SPDX-License-Identifier: Apache-2.0
#include "patterns.h"

#include <re2/re2.h>

namespace lab {

bool find_pattern(std::string_view pattern, std::string_view text,
                  std::vector<std::string>* groups) {
    RE2::Options options(RE2::Latin1);
    options.set_never_nl(true);
    options.set_log_errors(false);
    const RE2 compiled("(?m)" + std::string(pattern), options);
    if (!compiled.ok())
        return false;
    const size_t count =
        groups == nullptr ? 0 : static_cast<size_t>(compiled.NumberOfCapturingGroups()) + 1;
    std::vector<re2::StringPiece> found(count);
    if (!compiled.Match({text.data(), text.size()}, 0, text.size(), RE2::UNANCHORED, found.data(),
                        static_cast<int>(count)))
        return false;
    if (groups != nullptr) {
        groups->clear();
        for (const re2::StringPiece& piece : found)
            groups->emplace_back(piece.data() == nullptr ? "" : piece.as_string());
    }
    return true;
}

std::string literal_pattern(std::string_view text) {
    return RE2::QuoteMeta({text.data(), text.size()});
}

} // namespace lab
