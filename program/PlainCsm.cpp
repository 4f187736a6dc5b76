#include "PlainCsm.h"

namespace {

using Operation = int (CSTLModel::*)(char*);

// An explicit instantiation may name private members, and a friend that it defines hands them out.
template <Operation kSave, Operation kRead>
struct PlainOperations {
    friend Operation SaveOperation() { return kSave; }
    friend Operation ReadOperation() { return kRead; }
};

Operation SaveOperation();
Operation ReadOperation();

template struct PlainOperations<&CSTLModel::SaveCSMFile, &CSTLModel::ReadCSMFile>;

}  // namespace

int SavePlainCsm(CSTLModel& model, char* path) { return (model.*SaveOperation())(path); }

int ReadPlainCsm(CSTLModel& model, char* path) { return (model.*ReadOperation())(path); }
