// The repair passes on arbitrary octets, with their listing.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "app/entry.h"
#include "runtime/output.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string input = "/tmp/qortlv-fuzz-repair-" + std::to_string(getpid()) + ".ber";
    static const std::string repaired = input + ".fixed";
    std::FILE* file = std::fopen(input.c_str(), "wb");
    if (file == nullptr) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    const char* args[] = {"qortlv", "-zfixencoding", repaired.c_str(), input.c_str()};
    std::string output;
    OutStream* sink = outStreamForSink(&output);
    runEntry(4, const_cast<char**>(args), sink);
    outStreamRelease(sink);
    std::remove(repaired.c_str());
    return 0;
}
