// OLTP: binary STL with a longer header.

#include "mesh/STLModel.h"
#include "modelfiles/StoredName.h"

using namespace varnet;

namespace {

constexpr int kOltpType = 4;
constexpr int kHeaderLen = 256;

}  // namespace

int CSTLModel::ReadOLTPFile(char* path, int bCountOnly) {
    m_Status.m_nFileType = kOltpType;
    StoreFileName(path, m_Status);
    return ReadSTLBINARY(path, bCountOnly, kHeaderLen);
}
