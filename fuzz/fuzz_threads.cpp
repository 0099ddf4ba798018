// The same run on one thread and on four: standard output and exit status
// must be the same, byte for byte. The first octet chooses the layout and
// options as in fuzz_run, and -records; the rest is the input, which the
// listing cuts into stretches of a few octets, so that records, headers,
// padding and faults fall on every side of a stretch's end.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/entry.h"
#include "fuzz/run_options.h"
#include "runtime/output.h"

namespace {

struct Run {
    std::string output;
    int status;
};

Run runWith(std::vector<const char*> args, const char* threads, const uint8_t* data, size_t size)
{
    args.insert(args.begin() + 1, {"-threads", threads});
    Run run;
    OutStream* sink = outStreamForSink(&run.output);
    run.status = runEntryOnBuffer(static_cast<int>(args.size()), const_cast<char**>(args.data()), data, size, sink);
    outStreamRelease(sink);
    return run;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 2) return 0;
    static const char* const kRecords[] = {"2", "3-", "2-4", "1-1"};
    const uint8_t choice = data[0];
    const uint8_t more = data[1];
    std::vector<const char*> args = runOptions(choice);
    if ((choice & 0x80) != 0) args.push_back("-tags");
    if ((choice & 0x80) != 0) args.push_back("3gpp-ps");
    if ((more & 4) != 0) {
        args.push_back("-records");
        args.push_back(kRecords[more & 3]);
    }
    args.push_back("input.ber");
    const Run one = runWith(args, "1", data + 2, size - 2);
    const Run four = runWith(args, "4", data + 2, size - 2);
    if (one.status != four.status || one.output != four.output) std::abort();
    return 0;
}
