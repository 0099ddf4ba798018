// The options a fuzz target's first octet chooses for a whole run: the
// layout, -pad, -noshort, -nocdrheaders, and -oids -dig -utf8 together.
#pragma once

#include <cstdint>
#include <vector>

inline std::vector<const char*> runOptions(uint8_t choice)
{
    static const char* const kLayouts[] = {"-hexadecimal", "-syntax", "-decomposed", "-json"};
    std::vector<const char*> args = {"qortlv", kLayouts[choice & 3]};
    if ((choice & 4) != 0) {
        args.push_back("-pad");
        args.push_back((choice & 0x10) != 0 ? "0" : "0xFF");
    }
    if ((choice & 8) != 0) args.push_back("-noshort");
    if ((choice & 0x20) != 0) args.push_back("-nocdrheaders");
    if ((choice & 0x40) != 0) {
        for (const char* meaning : {"-oids", "-dig", "-utf8"}) args.push_back(meaning);
    }
    return args;
}
