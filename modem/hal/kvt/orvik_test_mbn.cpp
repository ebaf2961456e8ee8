#include <cstdio>

#include "handlers.h"

int orvik_test_mbn_do(int, char**) { return std::puts("orvik_test_mbn_do is not built yet"); }
