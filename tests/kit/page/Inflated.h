#pragma once

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>

namespace varnet {

/// What raw DEFLATE holds, all of it.
inline std::string Inflated(std::string const& packed) {
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, -15), Z_OK);
    std::string bytes;
    std::string out(65536, '\0');
    std::string in = packed;
    stream.next_in = reinterpret_cast<Bytef*>(in.data());
    stream.avail_in = static_cast<uInt>(in.size());
    int state = Z_OK;
    while (state == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(out.data());
        stream.avail_out = static_cast<uInt>(out.size());
        state = inflate(&stream, Z_NO_FLUSH);
        bytes.append(out, 0, out.size() - stream.avail_out);
    }
    EXPECT_EQ(state, Z_STREAM_END);
    EXPECT_EQ(stream.avail_in, 0u);
    inflateEnd(&stream);
    return bytes;
}

}  // namespace varnet
