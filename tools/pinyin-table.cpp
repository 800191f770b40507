// Build-time generator: reads a table of Chinese characters and their
// readings ("\t0x94F6: \"yín\"," lines, several readings separated by commas)
// and writes a sorted C++ table of code point → the set of first letters of
// its readings, as a 26-bit mask.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <string>

namespace {

// The first letter of a reading, with its tone mark taken off.
int initialOf(const std::string &s, std::size_t pos)
{
    const unsigned char c = static_cast<unsigned char>(s[pos]);
    if (c < 0x80)
        return (c >= 'a' && c <= 'z') ? c - 'a' : -1;
    // Decode one UTF-8 sequence.
    unsigned cp = 0;
    int extra = 0;
    if ((c & 0xE0) == 0xC0) {
        cp = c & 0x1F;
        extra = 1;
    } else if ((c & 0xF0) == 0xE0) {
        cp = c & 0x0F;
        extra = 2;
    } else {
        return -1;
    }
    for (int i = 1; i <= extra; ++i) {
        if (pos + std::size_t(i) >= s.size())
            return -1;
        cp = (cp << 6) | (static_cast<unsigned char>(s[pos + std::size_t(i)]) & 0x3F);
    }
    switch (cp) {
    case 0xE0: case 0xE1: case 0x101: case 0x1CE: return 'a' - 'a';
    case 0xE8: case 0xE9: case 0xEA: case 0x113: case 0x11B: case 0x1EBF: case 0x1EC1: return 'e' - 'a';
    case 0xF2: case 0xF3: case 0x14D: case 0x1D2: return 'o' - 'a';
    case 0x144: case 0x148: case 0x1F9: return 'n' - 'a';
    case 0x1E3F: return 'm' - 'a';
    default: return -1;
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::cerr << "usage: pinyin-table READINGS OUTPUT\n";
        return 2;
    }
    std::ifstream in(argv[1]);
    if (!in) {
        std::cerr << "pinyin-table: cannot read " << argv[1] << "\n";
        return 1;
    }
    std::map<unsigned, unsigned> masks;
    std::string line;
    while (std::getline(in, line)) {
        const std::size_t hex = line.find("0x");
        const std::size_t colon = line.find(':', hex == std::string::npos ? 0 : hex);
        const std::size_t open = line.find('"', colon == std::string::npos ? 0 : colon);
        if (hex == std::string::npos || colon == std::string::npos || open == std::string::npos)
            continue;
        const unsigned long cp = std::strtoul(line.c_str() + hex, nullptr, 16);
        if (cp == 0 || cp > 0xFFFF)
            continue;
        unsigned mask = 0;
        bool atStart = true;
        for (std::size_t i = open + 1; i < line.size() && line[i] != '"'; ++i) {
            if (line[i] == ',') {
                atStart = true;
                continue;
            }
            if (atStart) {
                const int letter = initialOf(line, i);
                if (letter >= 0)
                    mask |= 1u << letter;
                atStart = false;
            }
        }
        if (mask)
            masks[unsigned(cp)] |= mask;
    }
    if (masks.size() < 1000) {
        std::cerr << "pinyin-table: " << argv[1] << " holds too few readings\n";
        return 1;
    }
    std::ofstream out(argv[2]);
    out << "// Generated at build time from the system's table of readings; do not edit.\n";
    out << "static const kx::PinyinEntry kPinyinTable[] = {\n";
    for (const auto &[cp, mask] : masks)
        out << "    {0x" << std::hex << cp << ", 0x" << mask << std::dec << "},\n";
    out << "};\n";
    return out ? 0 : 1;
}
