// Writes a synthetic CDR file of realistic shape for the benchmark:
// concatenated packet-data, voice and SMS records of 40 to 120 elements
// each, reproducible from a seed, up to a target size.
//
//   gen_cdr --variant definite|headers|indefinite --mb N [--seed S] --out FILE
//
// definite:   records back to back, definite lengths, no headers
// headers:    a CDR file header, then a 4-octet record header per record
// indefinite: as definite, but every constructed element in the indefinite
//             form, closed by end-of-contents octets
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using Octets = std::vector<uint8_t>;

bool gIndefinite = false;

void appendLength(Octets& out, size_t length)
{
    if (length < 0x80) {
        out.push_back(static_cast<uint8_t>(length));
        return;
    }
    int octets = 0;
    for (size_t rest = length; rest != 0; rest >>= 8) ++octets;
    out.push_back(static_cast<uint8_t>(0x80 | octets));
    for (int i = octets - 1; i >= 0; --i) out.push_back(static_cast<uint8_t>(length >> (8 * i)));
}

// Identifier octets: class and form bits, then the number, in the
// high-tag-number form above 30.
void appendTag(Octets& out, uint8_t classAndForm, uint32_t number)
{
    if (number < 31) {
        out.push_back(static_cast<uint8_t>(classAndForm | number));
        return;
    }
    out.push_back(static_cast<uint8_t>(classAndForm | 0x1F));
    uint8_t groups[5];
    int count = 0;
    do {
        groups[count++] = static_cast<uint8_t>(number & 0x7F);
        number >>= 7;
    } while (number != 0);
    for (int i = count - 1; i >= 0; --i) out.push_back(static_cast<uint8_t>(groups[i] | (i != 0 ? 0x80 : 0)));
}

void append(Octets& out, const Octets& more)
{
    out.insert(out.end(), more.begin(), more.end());
}

void primitive(Octets& out, uint8_t tagClass, uint32_t number, const Octets& value)
{
    appendTag(out, tagClass, number);
    appendLength(out, value.size());
    append(out, value);
}

void constructed(Octets& out, uint8_t tagClass, uint32_t number, const Octets& contents)
{
    appendTag(out, static_cast<uint8_t>(tagClass | 0x20), number);
    if (gIndefinite) {
        out.push_back(0x80);
        append(out, contents);
        out.push_back(0);
        out.push_back(0);
        return;
    }
    appendLength(out, contents.size());
    append(out, contents);
}

constexpr uint8_t kUniversal = 0x00;
constexpr uint8_t kApplication = 0x40;
constexpr uint8_t kContext = 0x80;

Octets integerOctets(int64_t value)
{
    Octets out;
    int size = 1;
    while (size < 8 && (value < -(int64_t{1} << (8 * size - 1)) || value >= (int64_t{1} << (8 * size - 1)))) ++size;
    for (int i = size - 1; i >= 0; --i) out.push_back(static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i)));
    return out;
}


class RecordMaker {
public:
    explicit RecordMaker(uint32_t seed) : random_(seed) {}

    Octets record()
    {
        switch (pick(0, 9)) {
            case 0: case 1: return smsRecord();
            case 2: case 3: case 4: return voiceRecord();
            default: return packetRecord();
        }
    }

private:
    std::mt19937 random_;

    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

    Octets tbcd(int digits)
    {
        Octets out;
        for (int i = 0; i < digits; i += 2) {
            int low = pick(0, 9);
            int high = i + 1 < digits ? pick(0, 9) : 0xF;
            out.push_back(static_cast<uint8_t>(high << 4 | low));
        }
        return out;
    }

    Octets timeStamp()
    {
        auto bcd = [](int v) { return static_cast<uint8_t>((v / 10) << 4 | (v % 10)); };
        return {bcd(25), bcd(pick(1, 12)), bcd(pick(1, 28)), bcd(pick(0, 23)), bcd(pick(0, 59)), bcd(pick(0, 59)),
                '+', bcd(pick(0, 2)), bcd(0)};
    }

    Octets text(const char* stem)
    {
        std::string name = stem;
        name += std::to_string(pick(1, 99));
        return Octets(name.begin(), name.end());
    }

    Octets ipAddress()
    {
        Octets inner;
        primitive(inner, kContext, 0, {10, static_cast<uint8_t>(pick(0, 255)), static_cast<uint8_t>(pick(0, 255)),
                                       static_cast<uint8_t>(pick(1, 254))});
        Octets out;
        constructed(out, kContext, static_cast<uint32_t>(pick(4, 40)), inner);
        return out;
    }

    void commonFields(Octets& body)
    {
        primitive(body, kContext, 0, integerOctets(pick(0, 90)));       // record type
        primitive(body, kContext, 3, tbcd(15));                          // IMSI
        primitive(body, kContext, 31, tbcd(16));                         // IMEI, a high tag
        primitive(body, kContext, 13, timeStamp());                      // opening time
        primitive(body, kContext, 14, integerOctets(pick(0, 86400)));    // duration
        primitive(body, kUniversal, 1, {static_cast<uint8_t>(pick(0, 1) ? 0xFF : 0x00)});
        primitive(body, kUniversal, 5, {});
        primitive(body, kUniversal, 10, integerOctets(pick(0, 5)));      // ENUMERATED
        primitive(body, kUniversal, 22, text("NODE-"));                  // IA5String
        primitive(body, kUniversal, 6, {0x2B, 0x06, 0x01, 0x04, 0x01, 0x82, 0x37, static_cast<uint8_t>(pick(1, 9))});
        append(body, ipAddress());
    }

    Octets volumes(int count)
    {
        Octets list;
        for (int i = 0; i < count; ++i) {
            Octets container;
            primitive(container, kContext, 3, integerOctets(pick(0, 1 << 30)));  // uplink
            primitive(container, kContext, 4, integerOctets(pick(0, 1 << 30)));  // downlink
            primitive(container, kContext, 5, {static_cast<uint8_t>(pick(0, 3))});
            primitive(container, kContext, 6, timeStamp());
            Octets one;
            constructed(one, kUniversal, 16, container);
            append(list, one);
        }
        Octets out;
        constructed(out, kContext, 12, list);
        return out;
    }

    Octets packetRecord()
    {
        Octets body;
        commonFields(body);
        primitive(body, kContext, 7, text("internet.apn"));
        primitive(body, kContext, 5, integerOctets(pick(0, 1 << 24)));  // charging ID
        Octets list = volumes(pick(6, 24));
        append(body, list);
        for (int i = 0; i < pick(4, 12); ++i) primitive(body, kContext, static_cast<uint32_t>(pick(32, 200)), tbcd(10));
        Octets out;
        constructed(out, kApplication, 78, body);  // [APPLICATION 78]
        return out;
    }

    Octets voiceRecord()
    {
        Octets body;
        commonFields(body);
        for (int i = 0; i < pick(20, 60); ++i) {
            switch (pick(0, 3)) {
                case 0: primitive(body, kContext, static_cast<uint32_t>(pick(32, 120)), tbcd(12)); break;
                case 1: primitive(body, kContext, static_cast<uint32_t>(pick(32, 120)), integerOctets(pick(-500, 500000))); break;
                case 2: primitive(body, kContext, static_cast<uint32_t>(pick(32, 120)), timeStamp()); break;
                default: append(body, ipAddress()); break;
            }
        }
        Octets out;
        constructed(out, kApplication, 1, body);
        return out;
    }

    Octets smsRecord()
    {
        Octets body;
        commonFields(body);
        for (int i = 0; i < pick(20, 40); ++i) {
            primitive(body, kContext, static_cast<uint32_t>(pick(32, 90)), pick(0, 1) ? tbcd(12) : text("SMSC-"));
        }
        Octets out;
        constructed(out, kApplication, 6, body);
        return out;
    }
};

}  // namespace

int main(int argc, char** argv)
{
    std::string variant = "definite";
    std::string path;
    double megabytes = 200;
    uint32_t seed = 20261123;
    for (int i = 1; i + 1 < argc; i += 2) {
        std::string option = argv[i];
        if (option == "--variant") variant = argv[i + 1];
        if (option == "--mb") megabytes = std::atof(argv[i + 1]);
        if (option == "--seed") seed = static_cast<uint32_t>(std::strtoul(argv[i + 1], nullptr, 10));
        if (option == "--out") path = argv[i + 1];
    }
    if (path.empty() || (variant != "definite" && variant != "headers" && variant != "indefinite")) {
        std::fprintf(stderr, "usage: gen_cdr --variant definite|headers|indefinite --mb N [--seed S] --out FILE\n");
        return 2;
    }
    gIndefinite = variant == "indefinite";
    const bool headers = variant == "headers";
    const auto target = static_cast<size_t>(megabytes * 1024 * 1024);

    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (out == nullptr) {
        std::perror(path.c_str());
        return 1;
    }
    RecordMaker maker(seed);
    Octets chunk;
    size_t written = 0;
    constexpr size_t kFileHeader = 64;
    if (headers) {
        // The file length is filled in at the end, once it is known.
        Octets header(kFileHeader, 0);
        header[7] = static_cast<uint8_t>(kFileHeader);
        std::memcpy(header.data() + 8, "QORTLV-BENCH", 12);
        std::fwrite(header.data(), 1, header.size(), out);
        written += header.size();
    }
    while (written < target) {
        Octets record = maker.record();
        if (headers) {
            if (record.size() > 0xFFFF) continue;
            chunk.push_back(static_cast<uint8_t>(record.size() >> 8));
            chunk.push_back(static_cast<uint8_t>(record.size()));
            chunk.push_back(0x00);
            chunk.push_back(0x01);
        }
        append(chunk, record);
        written += record.size() + (headers ? 4 : 0);
        if (chunk.size() > (1 << 20)) {
            std::fwrite(chunk.data(), 1, chunk.size(), out);
            chunk.clear();
        }
    }
    std::fwrite(chunk.data(), 1, chunk.size(), out);
    if (headers) {
        uint8_t length[4] = {static_cast<uint8_t>(written >> 24), static_cast<uint8_t>(written >> 16),
                             static_cast<uint8_t>(written >> 8), static_cast<uint8_t>(written)};
        std::fseek(out, 0, SEEK_SET);
        std::fwrite(length, 1, 4, out);
    }
    return std::fclose(out) == 0 ? 0 : 1;
}
