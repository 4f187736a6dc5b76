#pragma once

#include <Varnet64.h>

#include <memory>
#include <string>
#include <vector>

/// The shells of the model, named after the file name. Throws when it was interrupted.
std::vector<std::unique_ptr<CSTLModel>> SplitModel(CSTLModel& model, std::string const& name);
