#!/usr/bin/env python3
"""Writes cdr-sample.ber: a small CDR file of the shape telecom switches
write: a 64-octet file header, then records of [APPLICATION 20] (a packet
data record) and [APPLICATION 1] (a voice call), each behind a 4-octet
record header."""
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

def tbcd(digits: str) -> bytes:
    if len(digits) % 2:
        digits += "F"
    return bytes(int(digits[i + 1], 16) << 4 | int(digits[i], 16) for i in range(0, len(digits), 2))

def stamp(text: str) -> bytes:  # YYMMDDhhmmss+hhmm as BCD
    digits = text.replace("+", "")
    out = bytes(int(digits[i:i + 2], 16) for i in range(0, 12, 2))
    return out + b"+" + bytes(int(digits[i:i + 2], 16) for i in range(12, 16, 2))

def integer(value: int) -> bytes:
    size = max(1, (value.bit_length() + 8) // 8)
    return value.to_bytes(size, "big", signed=True)

def packet_record(seq: int) -> bytes:
    body = b"".join([
        tlv(b"\x80", integer(18)),                       # record type
        tlv(b"\x83", tbcd("262019876543210")),           # served IMSI
        tlv(b"\xA4", tlv(b"\x80", bytes([10, 20, 30, seq]))),  # serving node address
        tlv(b"\x85", integer(0x1A2B3C)),                 # charging ID
        tlv(b"\x87", b"internet.example"),               # APN
        tlv(b"\x8D", stamp("251123080000+0100")),        # record opening time
        tlv(b"\x8E", integer(3600)),                     # duration
        tlv(b"\x8F", integer(0)),                        # cause for closing
        tlv(b"\x9F\x20", tbcd("491701234567")),          # MSISDN, a high tag
        tlv(b"\x9F\x21", integer(1234567890123)),        # data volume, 6 octets
        tlv(b"\x01", b"\xFF"),                           # BOOLEAN
        tlv(b"\x05", b""),                               # NULL
        tlv(b"\x06", bytes([0x2B, 0x06, 0x01, 0x04, 0x01, 0x82, 0x37])),
        tlv(b"\x0A", integer(2)),                        # ENUMERATED
    ])
    return tlv(b"\x74", body)

def voice_record(seq: int) -> bytes:
    body = b"".join([
        tlv(b"\x80", integer(1)),
        tlv(b"\x82", tbcd("491709876543")),
        tlv(b"\x16", b"MSC-FRANKFURT-%02d" % seq),
        tlv(b"\x17", b"251123080501Z"),
        tlv(b"\x02", integer(-129)),
    ])
    return tlv(b"\x61", body)

records = [packet_record(1), voice_record(2), packet_record(3)]
body = b""
for record in records:
    body += struct.pack(">HBB", len(record), 0x00, 0x01) + record
header_length = 64
header = struct.pack(">II", header_length + len(body), header_length)
header += b"QORTLV-SAMPLE".ljust(header_length - 8, b"\x00")
sys.stdout.buffer.write(header + body)
