#pragma once

#include <gtest/gtest.h>

#include <cstddef>

/// Checks that the fields of a record stand one behind the other in the order of the calls, each at the next
/// place that its alignment allows, and that the record holds nothing else.
class FieldWalk {
public:
    /// nStart is where the first field may stand: behind the virtual table's pointer, or behind a base.
    template <class Record>
    FieldWalk(Record const& record, std::size_t nStart)
        : m_pRecord(reinterpret_cast<char const*>(&record)),
          m_nSize(sizeof(Record)),
          m_nAlign(alignof(Record)),
          m_nNext(nStart) {}

    template <class Field>
    FieldWalk& Then(char const* pName, Field const& field) {
        std::size_t const nPlace =
            static_cast<std::size_t>(reinterpret_cast<char const*>(&field) - m_pRecord);
        EXPECT_EQ(RoundUp(m_nNext, alignof(Field)), nPlace) << pName;
        m_nNext = nPlace + sizeof(Field);
        return *this;
    }

    void End() const { EXPECT_EQ(RoundUp(m_nNext, m_nAlign), m_nSize); }

    static constexpr std::size_t kVirtual = sizeof(void*);

private:
    static std::size_t RoundUp(std::size_t n, std::size_t nStep) { return (n + nStep - 1) / nStep * nStep; }

    char const* m_pRecord;
    std::size_t m_nSize;
    std::size_t m_nAlign;
    std::size_t m_nNext;
};
