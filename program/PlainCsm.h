#pragma once

#include <Varnet64.h>

// The plain CSM layout. Its two operations are private in CSTLModel, though the library exports them: these
// reach them.

/// CSTLModel::SaveCSMFile
int SavePlainCsm(CSTLModel& model, char* path);

/// CSTLModel::ReadCSMFile
int ReadPlainCsm(CSTLModel& model, char* path);
