// A whole run of one of the layouts on arbitrary octets. The first octet
// chooses the layout, -pad, -noshort, -nocdrheaders and -oids -dig -utf8;
// the rest is the input.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "app/entry.h"
#include "fuzz/run_options.h"
#include "runtime/output.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) return 0;
    const uint8_t choice = data[0];
    std::vector<const char*> args = runOptions(choice);
    if ((choice & 0x80) != 0) args.push_back((choice & 0x10) != 0 ? "-check" : "-diagnose");
    args.push_back("input.ber");
    std::string output;
    OutStream* sink = outStreamForSink(&output);
    runEntryOnBuffer(static_cast<int>(args.size()), const_cast<char**>(args.data()), data + 1, size - 1, sink);
    outStreamRelease(sink);
    return 0;
}
