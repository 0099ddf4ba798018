// Inputs of hostile shape, and whole runs on them within a time bound: a
// linear walk takes a fraction of it, a quadratic one hours.
#pragma once

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "app/entry.h"
#include "runtime/output.h"

namespace hostile {

using Octets = std::vector<uint8_t>;

// Builds with sanitizers run several times slower.
#if defined(__SANITIZE_ADDRESS__)
constexpr double kBudgetSeconds = 90;
#else
constexpr double kBudgetSeconds = 20;
#endif

struct TimedRun {
    int status;
    std::string output;
    double seconds;
};

// A whole run in memory with `options` in front of the input's name.
inline TimedRun runTimed(const Octets& input, std::vector<const char*> options)
{
    std::vector<const char*> args = {"qortlv"};
    args.insert(args.end(), options.begin(), options.end());
    args.push_back("hostile.ber");
    TimedRun run{0, {}, 0};
    OutStream* sink = outStreamForSink(&run.output);
    const auto start = std::chrono::steady_clock::now();
    run.status = runEntryOnBuffer(static_cast<int>(args.size()), const_cast<char**>(args.data()), input.data(),
                                  input.size(), sink);
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    outStreamRelease(sink);
    return run;
}

// `unit` written `times` times, behind `front`.
inline Octets repeated(Octets front, int times, std::initializer_list<uint8_t> unit)
{
    for (int i = 0; i < times; ++i) front.insert(front.end(), unit);
    return front;
}

// An OCTET STRING of `length` octets 'A', its length in four octets.
inline Octets longOctetString(uint32_t length)
{
    Octets octets(6 + static_cast<size_t>(length), 0x41);
    octets[0] = 0x04;
    octets[1] = 0x84;
    for (int i = 0; i < 4; ++i) octets[2 + i] = static_cast<uint8_t>(length >> (24 - 8 * i));
    return octets;
}

}  // namespace hostile
