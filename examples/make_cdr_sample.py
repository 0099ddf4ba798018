#!/usr/bin/env python3
"""Writes cdr-sample.ber: a small CDR file of the shape packet gateways
write: a 64-octet file header, then 3GPP TS 32.298 records, each behind a
4-octet record header: two PGW records ([79]) and an SGW record ([78]),
with the real tags and value layouts (TBCD IMSI and IMEI, MSISDN, BCD time
stamps, IPv4 and IPv6 addresses, PLMN identities). The SGW record's stop
time holds month 13 on purpose: a value that does not fit its form."""
import struct, sys

def tlv(tag: bytes, value: bytes) -> bytes:
    n = len(value)
    if n < 0x80:
        length = bytes([n])
    elif n < 0x100:
        length = bytes([0x81, n])
    else:
        length = bytes([0x82, n >> 8, n & 0xFF])
    return tag + length + value

def ctx(number: int, value: bytes, constructed: bool = False) -> bytes:
    """A context-specific element; numbers above 30 in the high-tag form."""
    first = 0xA0 if constructed else 0x80
    if number < 31:
        return tlv(bytes([first | number]), value)
    return tlv(bytes([first | 0x1F, number]), value)

def tbcd(digits: str) -> bytes:
    if len(digits) % 2:
        digits += "F"
    return bytes(int(digits[i + 1], 16) << 4 | int(digits[i], 16) for i in range(0, len(digits), 2))

def stamp(text: str) -> bytes:  # YYMMDDhhmmss+hhmm, plain BCD
    sign = "+" if "+" in text else "-"
    date, offset = text.split(sign)
    return bytes.fromhex(date) + sign.encode() + bytes.fromhex(offset)

def integer(value: int) -> bytes:
    size = max(1, (value.bit_length() + 8) // 8)
    return value.to_bytes(size, "big", signed=True)

def ipv4(text: str) -> bytes:
    return bytes(int(part) for part in text.split("."))

def gsn_v4(number: int, address: str) -> bytes:
    return ctx(number, ctx(0, ipv4(address)), constructed=True)

PLMN_262_01 = bytes([0x62, 0xF2, 0x10])
IPV6_2001_DB8_1 = bytes.fromhex("20010db8000000000000000000000001")

def traffic_volumes(containers) -> bytes:
    body = b""
    for up, down, condition, time in containers:
        body += tlv(b"\x30", b"".join([
            ctx(3, integer(up)),            # dataVolumeGPRSUplink
            ctx(4, integer(down)),          # dataVolumeGPRSDownlink
            ctx(5, integer(condition)),     # changeCondition
            ctx(6, stamp(time)),            # changeTime
        ]))
    return ctx(12, body, constructed=True)

def pgw_record(seq: int, imsi: str, msisdn: str, opening: str, cause: int) -> bytes:
    body = b"".join([
        ctx(0, integer(85)),                                   # recordType: pGWRecord
        ctx(3, tbcd(imsi)),                                    # servedIMSI
        gsn_v4(4, "10.20.30.1"),                               # p-GWAddress
        ctx(5, integer(0x1A2B3C00 + seq)),                     # chargingID
        ctx(6, ctx(1, IPV6_2001_DB8_1), constructed=True),     # servingNodeAddress
        ctx(7, b"internet"),                                   # accessPointNameNI
        ctx(8, bytes([0xF1, 0x21])),                           # pdpPDNType
        ctx(9, gsn_v4(0, "100.64.%d.7" % seq), constructed=True),  # servedPDPPDNAddress
        traffic_volumes([(1234567, 7654321, 2, "261123101502+0100"),
                         (9, 1234567890123, 0, "261123111502+0100")]),
        ctx(13, stamp(opening)),                               # recordOpeningTime
        ctx(14, integer(3600)),                                # duration
        ctx(15, integer(cause)),                               # causeForRecClosing
        ctx(18, b"PGW-FRA-01"),                                # nodeID
        ctx(19, tlv(b"\x30", b"".join([                        # recordExtensions
            tlv(b"\x06", bytes([0x2B, 0x06, 0x01, 0x04, 0x01, 0x82, 0x37, 0x01])),
            ctx(1, b"\x00"),
            ctx(2, tlv(b"\x04", b"\x01\x02"), constructed=True),
        ])), constructed=True),
        ctx(22, b"\x91" + tbcd(msisdn)),                       # servedMSISDN
        ctx(27, PLMN_262_01),                                  # servingNodePLMNIdentifier
        ctx(29, tbcd("3569380356438091")),                     # servedIMEI (IMEISV)
        ctx(30, integer(6)),                                   # rATType: EUTRAN
        ctx(34, tlv(b"\x30", b"".join([                        # listOfServiceData
            ctx(1, integer(100)),                              # ratingGroup
            ctx(5, stamp("261123101502+0100")),                # timeOfFirstUsage
            ctx(12, integer(1234567)),                         # datavolumeFBCUplink
            ctx(13, integer(7654321)),                         # datavolumeFBCDownlink
        ])), constructed=True),
        ctx(37, PLMN_262_01),                                  # p-GWPLMNIdentifier
    ])
    return ctx(79, body, constructed=True)

def sgw_record() -> bytes:
    body = b"".join([
        ctx(0, integer(84)),                                   # recordType: sGWRecord
        ctx(3, tbcd("310410123456789")),                       # servedIMSI
        gsn_v4(4, "10.20.40.1"),                               # s-GWAddress
        ctx(5, integer(77)),                                   # chargingID
        ctx(7, b"ims"),                                        # accessPointNameNI
        ctx(13, stamp("261123235959-0500")),                   # recordOpeningTime
        ctx(14, integer(0)),                                   # duration
        ctx(15, integer(16)),                                  # causeForRecClosing: volumeLimit
        ctx(22, b"\x91" + tbcd("14155550123")),                # servedMSISDN
        ctx(27, bytes([0x13, 0x00, 0x14])),                    # servingNodePLMNIdentifier: 310/410
        ctx(39, stamp("261323235959-0500")),                   # stopTime: month 13
    ])
    return ctx(78, body, constructed=True)

records = [
    pgw_record(1, "262011234567890", "491711234567", "261123101502+0100", 0),
    sgw_record(),
    pgw_record(2, "26201987654321", "4917112345678", "261123111502+0100", 4),
]
body = b""
for record in records:
    body += struct.pack(">HBB", len(record), 0x00, 0x01) + record
header_length = 64
header = struct.pack(">II", header_length + len(body), header_length)
header += b"QORTLV-SAMPLE".ljust(header_length - 8, b"\x00")
sys.stdout.buffer.write(header + body)
