#include "site/sha256.hpp"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace vorcfg::site {

namespace {

constexpr std::size_t block_size = 64;

constexpr std::uint32_t round_constants[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

using Hash = std::array<std::uint32_t, 8>;

void take_block(Hash& hash, std::string_view block)
{
    std::array<std::uint32_t, 64> words{};
    for (std::size_t i = 0; i < block_size; i++) {
        words[i / 4] = words[i / 4] << 8U | static_cast<unsigned char>(block[i]);
    }
    for (std::size_t i = 16; i < words.size(); i++) {
        const std::uint32_t near = words[i - 2];
        const std::uint32_t far = words[i - 15];
        words[i] = words[i - 16] + (std::rotr(far, 7) ^ std::rotr(far, 18) ^ far >> 3U) + words[i - 7] +
                   (std::rotr(near, 17) ^ std::rotr(near, 19) ^ near >> 10U);
    }
    auto [a, b, c, d, e, f, g, h] = hash;
    for (std::size_t i = 0; i < words.size(); i++) {
        const std::uint32_t one = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + ((e & f) ^ (~e & g)) +
                                  round_constants[i] + words[i];
        const std::uint32_t other =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + one;
        d = c;
        c = b;
        b = a;
        a = one + other;
    }
    const Hash mixed{a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < hash.size(); i++) {
        hash[i] += mixed[i];
    }
}

// The most significant byte first.
template <class Number>
void append_bytes(std::string& bytes, Number number)
{
    for (std::size_t shift = 8 * sizeof number; shift != 0; shift -= 8) {
        bytes += static_cast<char>(number >> (shift - 8) & 0xffU);
    }
}

std::string padded_key(std::string_view key, unsigned char pad)
{
    std::string padded = key.size() > block_size ? sha256(key) : std::string(key);
    padded.resize(block_size);
    for (char& byte : padded) {
        byte = static_cast<char>(static_cast<unsigned char>(byte) ^ pad);
    }
    return padded;
}

} // namespace

std::string sha256(std::string_view text)
{
    Hash hash{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    const std::uint64_t bits = std::uint64_t{text.size()} * 8;
    for (; text.size() >= block_size; text.remove_prefix(block_size)) {
        take_block(hash, text);
    }
    std::string end(text);
    end += '\x80';
    end.resize(end.size() + sizeof bits > block_size ? 2 * block_size - sizeof bits : block_size - sizeof bits);
    append_bytes(end, bits);
    for (std::string_view left = end; !left.empty(); left.remove_prefix(block_size)) {
        take_block(hash, left);
    }
    std::string digest;
    for (const std::uint32_t word : hash) {
        append_bytes(digest, word);
    }
    return digest;
}

std::string hmac_sha256(std::string_view key, std::string_view text)
{
    std::string inner = padded_key(key, 0x36);
    inner += text;
    return sha256(padded_key(key, 0x5c) + sha256(inner));
}

} // namespace vorcfg::site
