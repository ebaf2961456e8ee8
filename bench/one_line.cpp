// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <memory>

int main() {
    const auto text = std::make_unique<const char*>("Not support");
    std::puts(*text);
    return 0;
}
