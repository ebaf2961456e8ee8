// SPDX-License-Identifier: Apache-2.0
#include "catalogue.h"

#include <algorithm>

namespace lab {

std::vector<std::string> words_of(std::string_view text) {
    std::vector<std::string> words;
    for (size_t end = 0; end < text.size();) {
        const size_t start = text.find_first_not_of(' ', end);
        if (start == std::string_view::npos)
            break;
        end = std::min(text.find(' ', start), text.size());
        words.emplace_back(text.substr(start, end - start));
    }
    return words;
}

const Command* find_command(std::span<const Command> rows, const std::vector<std::string>& line,
                            size_t& count) {
    const Command* found = nullptr;
    count = 0;
    for (const Command& row : rows) {
        const std::vector<std::string> words = words_of(row.words);
        if (words.size() <= count || words.size() > line.size())
            continue;
        if (std::equal(words.begin(), words.end(), line.begin())) {
            found = &row;
            count = words.size();
        }
    }
    return found;
}

} // namespace lab
