// Writes a synthetic CDR file of realistic shape for the benchmark:
// concatenated PGW and SGW records (3GPP TS 32.298) of 40 to 120 elements
// each, reproducible from a seed, up to a target size.
//
//   gen_cdr --variant definite|headers|indefinite --mb N [--seed S] --out FILE
//
// It prints what a listing must find: "records N last-offset X", the number
// of records and where the last record's element begins.
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
constexpr uint8_t kContext = 0x80;

Octets integerOctets(int64_t value)
{
    Octets out;
    int size = 1;
    while (size < 8 && (value < -(int64_t{1} << (8 * size - 1)) || value >= (int64_t{1} << (8 * size - 1)))) ++size;
    for (int i = size - 1; i >= 0; --i) out.push_back(static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i)));
    return out;
}


// PGW and SGW records of 3GPP TS 32.298 (GPRSRecord alternatives [79] and
// [78]) with the tags and value layouts of the real ones: TBCD IMSI and
// IMEI, MSISDN behind its nature/plan octet, BCD time stamps, IPv4 GSN
// addresses, PLMN identities, and SEQUENCE OF containers for the traffic
// volumes and the service data.
class RecordMaker {
public:
    explicit RecordMaker(uint32_t seed) : random_(seed) {}

    Octets record() { return pick(0, 9) < 7 ? pgwRecord() : sgwRecord(); }

private:
    std::mt19937 random_;

    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    uint8_t octet(int low, int high) { return static_cast<uint8_t>(pick(low, high)); }

    // Digits in TBCD order: the earlier digit in the low nibble, F filling
    // the last high nibble of an odd count.
    Octets tbcd(const char* prefix, int digits)
    {
        Octets out;
        int value[20];
        int count = 0;
        for (; prefix[count] != '\0'; ++count) value[count] = prefix[count] - '0';
        for (; count < digits; ++count) value[count] = pick(0, 9);
        for (int i = 0; i < digits; i += 2) {
            int high = i + 1 < digits ? value[i + 1] : 0xF;
            out.push_back(static_cast<uint8_t>(high << 4 | value[i]));
        }
        return out;
    }

    // An international E.164 MSISDN: octet 0x91, then the digits.
    Octets msisdn()
    {
        Octets out{0x91};
        append(out, tbcd("49171", pick(11, 13)));
        return out;
    }

    // YYMMDDhhmmss, sign, hhmm: plain BCD, tens in the high nibble.
    Octets timeStamp()
    {
        auto bcd = [](int v) { return static_cast<uint8_t>((v / 10) << 4 | (v % 10)); };
        return {bcd(26), bcd(pick(1, 12)), bcd(pick(1, 28)), bcd(pick(0, 23)), bcd(pick(0, 59)), bcd(pick(0, 59)),
                static_cast<uint8_t>(pick(0, 3) == 0 ? '-' : '+'), bcd(pick(0, 2)), bcd(pick(0, 1) * 30)};
    }

    Octets text(const char* stem)
    {
        std::string name = stem;
        name += std::to_string(pick(1, 99));
        return Octets(name.begin(), name.end());
    }

    // A GSNAddress: the iPBinV4Address alternative [0] inside the field's
    // explicit tag.
    void gsnAddress(Octets& body, uint32_t field)
    {
        Octets inner;
        primitive(inner, kContext, 0, {10, octet(0, 255), octet(0, 255), octet(1, 254)});
        constructed(body, kContext, field, inner);
    }

    // MCC 262 with MNC 01, 02 or 03.
    Octets plmnId() { return {0x62, 0xF2, static_cast<uint8_t>(pick(1, 3) << 4)}; }

    // The fields PGW and SGW records share, in tag order up to [32].
    void commonFields(Octets& body, int recordType)
    {
        primitive(body, kContext, 0, integerOctets(recordType));             // recordType
        primitive(body, kContext, 3, tbcd("26201", 15));                     // servedIMSI
        gsnAddress(body, 4);                                                 // p-GWAddress / s-GWAddress
        primitive(body, kContext, 5, integerOctets(pick(1, 0x7FFFFFFF)));    // chargingID
        Octets nodes;                                                        // servingNodeAddress
        for (int i = pick(1, 2); i > 0; --i) primitive(nodes, kContext, 0, {10, 20, octet(0, 255), octet(1, 254)});
        constructed(body, kContext, 6, nodes);
        static const char* const kApns[] = {"internet", "ims", "iot.example"};
        const char* apn = kApns[pick(0, 2)];
        primitive(body, kContext, 7, Octets(apn, apn + std::strlen(apn)));   // accessPointNameNI
        primitive(body, kContext, 8, {0xF1, 0x21});                          // pdpPDNType: IETF IPv4
        Octets address;                                                      // servedPDPPDNAddress
        Octets v4;
        primitive(v4, kContext, 0, {100, octet(64, 127), octet(0, 255), octet(1, 254)});
        constructed(address, kContext, 0, v4);
        constructed(body, kContext, 9, address);
        primitive(body, kContext, 11, {0xFF});                               // dynamicAddressFlag
        append(body, trafficVolumes(pick(1, recordType == 85 ? 6 : 12)));    // listOfTrafficVolumes
        primitive(body, kContext, 13, timeStamp());                          // recordOpeningTime
        primitive(body, kContext, 14, integerOctets(pick(0, 86400)));        // duration
        static const uint8_t kCauses[] = {0, 4, 16, 17, 18, 19, 22};
        primitive(body, kContext, 15, {kCauses[pick(0, 6)]});                // causeForRecClosing
        primitive(body, kContext, 17, integerOctets(pick(1, 500)));          // recordSequenceNumber
        primitive(body, kContext, 18, text("PGW-FRA-"));                     // nodeID
        primitive(body, kContext, 20, integerOctets(pick(1, 1 << 30)));      // localSequenceNumber
        primitive(body, kContext, 21, {octet(0, 2)});                        // apnSelectionMode
        primitive(body, kContext, 22, msisdn());                             // servedMSISDN
        primitive(body, kContext, 23, {0x08, 0x00});                         // chargingCharacteristics
        primitive(body, kContext, 24, {octet(0, 6)});                        // chChSelectionMode
        primitive(body, kContext, 27, plmnId());                             // servingNodePLMNIdentifier
        primitive(body, kContext, 29, tbcd("35693803", 16));                 // servedIMEI
        primitive(body, kContext, 30, {6});                                  // rATType: EUTRAN
        primitive(body, kContext, 31, {0x40, 0x00});                         // mSTimeZone, a high tag
        primitive(body, kContext, 32, {0x18, 0x62, 0xF2, 0x10, octet(0, 255), octet(0, 255), 0x62, 0xF2, 0x10,
                                       0x01, octet(0, 255), octet(0, 255), octet(0, 255)});  // userLocationInformation
    }

    Octets trafficVolumes(int count)
    {
        Octets list;
        for (int i = 0; i < count; ++i) {
            Octets container;
            primitive(container, kContext, 3, integerOctets(pick(0, 1 << 30)));  // dataVolumeGPRSUplink
            primitive(container, kContext, 4, integerOctets(pick(0, 1 << 30)));  // dataVolumeGPRSDownlink
            primitive(container, kContext, 5, {octet(0, 12)});                    // changeCondition
            primitive(container, kContext, 6, timeStamp());                       // changeTime
            primitive(container, kContext, 15, {6});                              // rATType
            constructed(list, kUniversal, 16, container);
        }
        Octets out;
        constructed(out, kContext, 12, list);
        return out;
    }

    Octets serviceData(int count)
    {
        Octets list;
        for (int i = 0; i < count; ++i) {
            Octets container;
            primitive(container, kContext, 1, integerOctets(pick(1, 9999)));       // ratingGroup
            primitive(container, kContext, 4, integerOctets(i + 1));               // localSequenceNumber
            primitive(container, kContext, 5, timeStamp());                       // timeOfFirstUsage
            primitive(container, kContext, 6, timeStamp());                       // timeOfLastUsage
            primitive(container, kContext, 7, integerOctets(pick(0, 3600)));       // timeUsage
            primitive(container, kContext, 8, {0x07, 0x00, 0x00, 0x01, 0x00});    // serviceConditionChange
            primitive(container, kContext, 12, integerOctets(pick(0, 1 << 28)));   // datavolumeFBCUplink
            primitive(container, kContext, 13, integerOctets(pick(0, 1 << 30)));   // datavolumeFBCDownlink
            constructed(list, kUniversal, 16, container);
        }
        Octets out;
        constructed(out, kContext, 34, list);
        return out;
    }

    // recordExtensions [19]: a ManagementExtension with its OID, the
    // significance BOOLEAN and an OCTET STRING as information.
    Octets recordExtensions()
    {
        Octets extension;
        primitive(extension, kUniversal, 6, {0x2B, 0x06, 0x01, 0x04, 0x01, 0x82, 0x37, octet(1, 9)});
        primitive(extension, kContext, 1, {0x00});
        Octets information;
        primitive(information, kUniversal, 4, {octet(0, 255), octet(0, 255), octet(0, 255), octet(0, 255)});
        constructed(extension, kContext, 2, information);
        Octets list;
        constructed(list, kUniversal, 16, extension);
        Octets out;
        constructed(out, kContext, 19, list);
        return out;
    }

    void tailFields(Octets& body)
    {
        Octets types;  // servingNodeType: gTPSGW
        primitive(types, kUniversal, 10, {2});
        constructed(body, kContext, 35, types);
        primitive(body, kContext, 37, plmnId());                             // p-GWPLMNIdentifier
        primitive(body, kContext, 38, timeStamp());                          // startTime
        primitive(body, kContext, 39, timeStamp());                          // stopTime
    }

    Octets pgwRecord()
    {
        Octets body;
        commonFields(body, 85);
        if (pick(0, 2) == 0) append(body, recordExtensions());
        append(body, serviceData(pick(0, 4)));                               // listOfServiceData
        tailFields(body);
        Octets out;
        constructed(out, kContext, 79, body);  // pGWRecord [79]
        return out;
    }

    Octets sgwRecord()
    {
        Octets body;
        commonFields(body, 84);
        primitive(body, kContext, 34, {0x00});                               // sGWChange
        tailFields(body);
        gsnAddress(body, 36);                                                // p-GWAddressUsed
        Octets out;
        constructed(out, kContext, 78, body);  // sGWRecord [78]
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
    uint64_t records = 0;
    uint64_t lastOffset = 0;
    while (written < target) {
        Octets record = maker.record();
        ++records;
        if (headers) {
            if (record.size() > 0xFFFF) continue;
            chunk.push_back(static_cast<uint8_t>(record.size() >> 8));
            chunk.push_back(static_cast<uint8_t>(record.size()));
            chunk.push_back(0x00);
            chunk.push_back(0x01);
        }
        lastOffset = written + (headers ? 4 : 0);
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
    std::printf("records %llu last-offset %llu\n", static_cast<unsigned long long>(records),
                static_cast<unsigned long long>(lastOffset));
    return std::fclose(out) == 0 ? 0 : 1;
}
