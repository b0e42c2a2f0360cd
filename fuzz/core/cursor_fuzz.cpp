// Reads random code lengths through both cursor readers over an exact buffer
// (plus the documented look-ahead) and checks that reads and give-backs keep
// the cursor consistent.
#include <cstdlib>

#include "core/bitstream.h"
#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kivvc::fuzz::Input in(data, size);
    const int offset = in.range(0, 31);
    const int lengths = in.range(1, 32);
    std::uint8_t plan[32];
    for (int i = 0; i < lengths; ++i) plan[i] = in.byte();
    const auto words = in.rest_words(1);
    const std::size_t bits = (words.size() - 1) * 32;

    // Word reader: never past the last word plus one.
    auto r = kivvc::bits::WordReader::load(words.data(), offset);
    std::size_t consumed = 31 - std::size_t(offset);
    for (int i = 0; i < lengths; ++i) {
        const int n = plan[i] % 32 + 1;
        if (consumed + std::size_t(n) > bits) break;
        const std::uint32_t peeked = r.peek(n);
        if (r.read(n) != peeked) std::abort();
        consumed += std::size_t(n);
        if (plan[i] & 0x80) {
            const int k = (plan[i] >> 3) % (n + 1);
            r.give_back(k);
            consumed -= std::size_t(k);
        }
    }
    if (std::size_t(r.word - words.data()) * 32 + (31 - std::size_t(r.offset)) != consumed) std::abort();

    // Byte reader over the same bytes, four bytes of look-ahead.
    std::vector<std::uint8_t> bytes(words.size() * 4 - 4 + 4);
    for (std::size_t i = 0; i + 4 < bytes.size() + 1 && i < (words.size() - 1) * 4; ++i)
        bytes[i] = static_cast<std::uint8_t>(words[i / 4] >> (24 - 8 * (i % 4)));
    kivvc::bits::ByteReader br{bytes.data(), offset & 7};
    std::size_t pos = std::size_t(offset & 7);
    for (int i = 0; i < lengths; ++i) {
        const int n = plan[i] % 25 + 1;
        if (pos + std::size_t(n) > (bytes.size() - 4) * 8) break;
        br.read(n);
        pos += std::size_t(n);
    }
    return 0;
}
