#include "fake_vorinfra.hpp"

#include <cstdio>

namespace fake {

namespace {

bool printable(vor_uchar byte)
{
    return byte >= 0x20 && byte < 0x7f;
}

} // namespace

std::string bytes_text(const vor_uchar* bytes, int count)
{
    std::string text;
    char piece[16];
    for (int at = 0; at < count;) {
        int equal = 1;
        while (at + equal < count && bytes[at + equal] == bytes[at]) {
            ++equal;
        }
        int letters = 0;
        while (at + letters < count && printable(bytes[at + letters])) {
            ++letters;
        }
        if (equal >= 4) {
            std::snprintf(piece, sizeof piece, " %02x*%d", bytes[at], equal);
            text += piece;
            at += equal;
        } else if (letters >= 3) {
            text += text_of(" '", std::string(bytes + at, bytes + at + letters), "'");
            at += letters;
        } else {
            std::snprintf(piece, sizeof piece, " %02x", bytes[at]);
            text += piece;
            ++at;
        }
    }
    return text;
}

std::string spelt(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        result += c == '\n'                              ? "\\n"
                  : c == '\0'                            ? "\\0"
                  : printable(static_cast<vor_uchar>(c)) ? std::string(1, c)
                                                         : "?";
    }
    return result;
}

} // namespace fake
