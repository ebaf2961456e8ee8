#include <cstdio>

#include "handlers.h"

int orvik_test_at_cmd_do(int, char**) { return std::puts("orvik_test_at_cmd_do is not built yet"); }
