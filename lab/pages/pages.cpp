// SPDX-License-Identifier: Apache-2.0
/* kvt-lab pages FOLDER: writes the pages of a source tree anew, or with --check tells which are not
 * what the catalogue says. */
#include "pages.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>

#include "verbs.h"

namespace lab {

namespace {

namespace fs = std::filesystem;

std::optional<std::string> contents(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(in), {});
}

/* Written aside and renamed: never half a page. */
bool put(const fs::path& file, const std::string& text) {
    const fs::path aside = file.string() + ".new";
    std::ofstream out(aside, std::ios::binary);
    out << text;
    out.close();
    std::error_code error;
    if (out)
        fs::rename(aside, file, error);
    if (!out || error)
        fs::remove(aside, error);
    return out.good() && !error;
}

} // namespace

int pages(const PagesOptions& options, const std::vector<VerbText>& verbs) {
    struct Page {
        const char* file;
        std::function<bool(std::string& text, std::string& error)> make;
    };
    const auto made = [](auto make) {
        return [make](std::string& text, std::string&) {
            text = make();
            return true;
        };
    };
    const Page all[] = {
        {"packaging/man/kvt.1", made(kvt_man_page)},
        {"packaging/man/kvt-lab.1", made([&] { return lab_man_page(verbs); })},
        {"packaging/completions/kvt.bash", made(bash_completion)},
        {"packaging/completions/_kvt", made(zsh_completion)},
        {"docs/commands.md", fill_command_heads},
        {"lab/phone/needs.h", made(doctor_needs)},
    };
    int status = 0;
    for (const Page& page : all) {
        const fs::path file = fs::path(options.folder) / page.file;
        const std::string there = contents(file).value_or("");
        std::string text = there, error;
        if (!page.make(text, error)) {
            std::fprintf(stderr, "kvt-lab: %s: %s\n", file.c_str(), error.c_str());
            status = 1;
        } else if (text != there && options.check) {
            std::fprintf(stderr,
                         "kvt-lab: %s is not what the catalogue says; kvt-lab pages renews it\n",
                         file.c_str());
            status = 1;
        } else if (text != there && !put(file, text)) {
            std::fprintf(stderr, "kvt-lab: %s can't be written\n", file.c_str());
            status = 1;
        }
    }
    return status;
}

} // namespace lab
