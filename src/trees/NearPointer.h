#pragma once

#include <cstdint>

namespace varnet {

/// A pointer of four bytes from a member of one record to another record that lies less than two gigabytes
/// away, such as one of the same table. Null when all its bytes are zero; no record points to itself by its
/// first member.
template <class Record>
class NearPointer {
public:
    NearPointer() = default;
    NearPointer(NearPointer const&) = delete;
    NearPointer& operator=(NearPointer const& other) { return *this = static_cast<Record*>(other); }
    NearPointer& operator=(Record* pRecord) {
        auto const nBytes =
            reinterpret_cast<std::uintptr_t>(pRecord) - reinterpret_cast<std::uintptr_t>(this);
        m_nBytes = pRecord == nullptr ? 0 : static_cast<std::int32_t>(nBytes);
        return *this;
    }
    operator Record*() const {
        char* const pThis = reinterpret_cast<char*>(const_cast<NearPointer*>(this));
        return m_nBytes == 0 ? nullptr : reinterpret_cast<Record*>(pThis + m_nBytes);
    }

private:
    std::int32_t m_nBytes;
};

}  // namespace varnet
