/* The DIAG library. */
#include "diag.h"

bool Diag_LSM_Init(unsigned char*) { return false; }
