#pragma once

#include <cstddef>
#include <cstdint>

// Memory that fails when a test says so: the allocations of the library and of this program are counted, and
// one of them fails.

/// While it lives, the nth allocation from now on fails, counted from 0, as where memory has run out.
class FailingMemory {
public:
    explicit FailingMemory(std::size_t nFailing);
    FailingMemory(FailingMemory const&) = delete;
    FailingMemory& operator=(FailingMemory const&) = delete;
    ~FailingMemory();
    /// Whether so many allocations have been asked for that one has failed.
    bool HasFailed() const;
};

/// How many blocks of memory, chunks of slots left out, are there that the library and this program have
/// asked for, and not given back.
std::int64_t LiveBlocks();
