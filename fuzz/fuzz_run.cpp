// A whole run of one of the layouts on arbitrary octets. The first octet
// chooses the layout, -pad, -noshort, -nocdrheaders and -oids -dig -utf8;
// the rest is the input.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "app/entry.h"
#include "runtime/output.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) return 0;
    static const char* const kLayouts[] = {"-hexadecimal", "-syntax", "-decomposed", "-json"};
    const uint8_t choice = data[0];
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
    if ((choice & 0x80) != 0) args.push_back((choice & 0x10) != 0 ? "-check" : "-diagnose");
    args.push_back("input.ber");
    std::string output;
    OutStream* sink = outStreamForSink(&output);
    runEntryOnBuffer(static_cast<int>(args.size()), const_cast<char**>(args.data()), data + 1, size - 1, sink);
    outStreamRelease(sink);
    return 0;
}
