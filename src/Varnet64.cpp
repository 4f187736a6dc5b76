#include "Varnet64.h"

int nVarnet = 0;

int fnVarnet() { return 42; }
