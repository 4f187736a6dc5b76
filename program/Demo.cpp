#include "Commands.h"
void AddDemo(CLI::App&) {}
