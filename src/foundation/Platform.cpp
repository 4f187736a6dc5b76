// What the engine takes for granted of the system that it is built for. cmake/VarnetPlatform.cmake refuses
// others earlier, with a sentence.

#include <bit>
#include <cfloat>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <limits>

static_assert(sizeof(void*) == 8 && sizeof(std::size_t) == 8,
              "meshes and files are larger than 32 bits count");
static_assert(std::endian::native == std::endian::little, "files hold numbers with the lowest byte first");
static_assert(CHAR_BIT == 8 && sizeof(int) == 4 && sizeof(short) == 2,
              "sizes of the numbers that hosts read");
static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559 &&
                  sizeof(float) == 4 && sizeof(double) == 8,
              "coordinates are numbers of IEEE 754");
static_assert(FLT_EVAL_METHOD == 0,
              "every operation is rounded to its type: no x87, no wider intermediate results");
static_assert((-1 >> 1) == -1, "whole numbers are shifted with their sign");
#if defined(__FAST_MATH__)
#error "-ffast-math changes the order of arithmetic: results would not be those of other builds"
#endif
