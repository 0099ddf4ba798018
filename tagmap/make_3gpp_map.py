#!/usr/bin/env python3
"""Writes data/3gpp-ps.tags, the bundled tag map of the 3GPP TS 32.298
packet-switched charging records, from a facts table of tab-separated rows
(record, path, tag, field, asn1_type, value_form).

    tagmap/make_3gpp_map.py TABLE.tsv > data/3gpp-ps.tags

The map is committed; the build reads only the map. A structure that occurs
twice or more with the same fields (GSNAddress, ChangeOfCharCondition, ...)
is written once as a `type` block and referenced with `@Name`."""
import collections
import sys

# The records' identifiers in the GPRSRecord CHOICE, by record type.
RECORD_NAMES = {
    "SGSNPDPRecord": "sgsnPDPRecord", "GGSNPDPRecordV750": "ggsnPDPRecord",
    "SGSNMMRecord": "sgsnMMRecord", "SGSNSMORecord": "sgsnSMORecord",
    "SGSNSMTRecord": "sgsnSMTRecord", "SGSNMTLCSRecord": "sgsnMTLCSRecord",
    "SGSNMOLCSRecord": "sgsnMOLCSRecord", "SGSNNILCSRecord": "sgsnNILCSRecord",
    "EGSNPDPRecordV750": "egsnPDPRecord", "SGSNMBMSRecord": "sgsnMBMSRecord",
    "GGSNMBMSRecord": "ggsnMBMSRecord", "SGWRecord": "sGWRecord",
    "PGWRecord": "pGWRecord", "GWMBMSRecord": "gwMBMSRecord",
    "TDFRecord": "tDFRecord", "IPERecord": "iPERecord",
    "EPDGRecord": "ePDGRecord", "TWAGRecord": "tWAGRecord",
}

# Named values of the enumerated types (TS 32.298 v18.2.0 and the MAP/SS
# types it imports), by ASN.1 type.
VALUES = {
    "BOOLEAN": "0=false -1=true 1=true",
    "CauseForRecClosing": "0=normalRelease 1=partialRecord 4=abnormalRelease 5=cAMELInitCallRelease "
        "16=volumeLimit 17=timeLimit 18=servingNodeChange 19=maxChangeCond 20=managementIntervention "
        "21=intraSGSNIntersystemChange 22=rATChange 23=mSTimeZoneChange 24=sGSNPLMNIDChange 25=sGWChange "
        "26=aPNAMBRChange 27=mOExceptionDataCounterReceipt 52=unauthorizedRequestingNetwork "
        "53=unauthorizedLCSClient 54=positionMethodFailure 58=unknownOrUnreachableLCSClient "
        "59=listofDownstreamNodeChange",
    "CauseForRecClosingV651": "0=normalRelease 4=abnormalRelease 5=cAMELInitCallRelease 16=volumeLimit "
        "17=timeLimit 18=sGSNChange 19=maxChangeCond 20=managementIntervention "
        "21=intraSGSNIntersystemChange 22=rATChange 23=mSTimeZoneChange 24=sGSNPLMNIDChange "
        "52=unauthorizedRequestingNetwork 53=unauthorizedLCSClient 54=positionMethodFailure "
        "58=unknownOrUnreachableLCSClient 59=listofDownstreamNodeChange",
    "ChangeCondition": "0=qoSChange 1=tariffTime 2=recordClosure 3=failureHandlingContinueOngoing "
        "4=failureHandlingRetryandTerminateOngoing 5=failureHandlingTerminateOngoing 6=cGI-SAICHange "
        "7=rAIChange 8=dT-Establishment 9=dT-Removal 10=eCGIChange 11=tAIChange 12=userLocationChange "
        "13=userCSGInformationChange 14=presenceInPRAChange 15=removalOfAccess 16=unusabilityOfAccess "
        "17=indirectChangeCondition 18=userPlaneToUEChange 19=servingPLMNRateControlChange "
        "20=threeGPPPSDataOffStatusChange 21=aPNRateControlChange",
    "ChangeConditionV651": "0=qoSChange 1=tariffTime 2=recordClosure 3=failureHandlingContinueOngoing "
        "4=failureHandlingRetryandTerminateOngoing 5=failureHandlingTerminateOngoing 6=cGI-SAICHange "
        "7=rAIChange 8=dT-Establishment 9=dT-Removal",
    "RecordType": "18=sgsnPDPRecord 20=sgsnMMRecord 21=sgsnSMORecord 22=sgsnSMTRecord 26=sgsnMTLCSRecord "
        "27=sgsnMOLCSRecord 28=sgsnNILCSRecord 76=sgsnMBMSRecord 77=ggsnMBMSRecord 84=sGWRecord "
        "85=pGWRecord 86=gwMBMSRecord 92=tDFRecord 95=iPERecord 96=ePDGRecord 97=tWAGRecord",
    "CallEventRecordType": "18=sgsnPDPRecord 19=ggsnPDPRecord 20=sgsnMMRecord 21=sgsnSMORecord "
        "22=sgsnSMTRecord 26=sgsnMtLCSRecord 27=sgsnMoLCSRecord 28=sgsnNiLCSRecord 70=egsnPDPRecord "
        "76=sgsnMBMSRecord 77=ggsnMBMSRecord",
    "APNSelectionMode": "0=mSorNetworkProvidedSubscriptionVerified 1=mSProvidedSubscriptionNotVerified "
        "2=networkProvidedSubscriptionNotVerified",
    "ChChSelectionMode": "0=servingNodeSupplied 1=subscriptionSpecific 2=aPNSpecific 3=homeDefault "
        "4=roamingDefault 5=visitingDefault 6=fixedDefault",
    "ServingNodeType": "0=sGSN 1=pMIPSGW 2=gTPSGW 3=ePDG 4=hSGW 5=mME 6=tWAN",
    "SecondaryRATType": "0=nR",
    "SubscriptionIDType": "0=eND-USER-E164 1=eND-USER-IMSI 2=eND-USER-SIP-URI 3=eND-USER-NAI "
        "4=eND-USER-PRIVATE",
    "CNOperatorSelectionEntity": "0=servCNSelectedbyUE 1=servCNSelectedbyNtw",
    "CSGAccessMode": "0=closedMode 1=hybridMode",
    "ChargingPerIPCANSessionIndicator": "0=inactive 1=active",
    "ThreeGPPPSDataOffStatus": "0=active 1=inactive",
    "PresenceReportingAreaStatus": "0=insideArea 1=outsideArea 2=inactive 3=unknown",
    "NBIFOMMode": "0=uEINITIATED 1=nETWORKINITIATED",
    "NBIFOMSupport": "0=nBIFOMNotSupported 1=nBIFOMSupported",
    "SGiPtPTunnellingMethod": "0=uDPIPbased 1=others",
    "TimeQuotaType": "0=dISCRETETIMEPERIOD 1=cONTINUOUSTIMEPERIOD",
    "AdditionalExceptionReports": "0=notAllowed 1=allowed",
    "RateControlTimeUnit": "0=unrestricted 1=minute 2=hour 3=day 4=week",
    "MBMS2G3GIndicator": "0=twoG 1=threeG 2=twoG-AND-threeG",
    "MBMSServiceType": "0=mULTICAST 1=bROADCAST",
    "MBMSUserServiceType": "0=dOWNLOAD 1=sTREAMING",
    "CNIPMulticastDistribution": "0=nO-IP-MULTICAST 1=iP-MULTICAST",
    "LCSClientType": "0=emergencyServices 1=valueAddedServices 2=plmnOperatorServices "
        "3=lawfulInterceptServices",
    "LCSClientInternalID": "0=broadcastService 1=o-andM-HPLMN 2=o-andM-VPLMN 3=anonymousLocation "
        "4=targetMSsubscribedService",
    "NotificationToMSUser": "0=notifyLocationAllowed 1=notifyAndVerify-LocationAllowedIfNoResponse "
        "2=notifyAndVerify-LocationNotAllowedIfNoResponse 3=locationNotAllowed",
    "LocationEstimateType": "0=currentLocation 1=currentOrLastKnownLocation 2=initialLocation "
        "3=activateDeferredLocation 4=cancelDeferredLocation 5=notificationVerificationOnly",
    "LocationMethod": "0=msBasedEOTD 1=msAssistedEOTD 2=assistedGPS 3=msBasedOTDOA 4=assistedGANSS "
        "5=assistedGPSandGANSS",
    "DefaultGPRS-Handling": "0=continueTransaction 1=releaseTransaction",
    "DefaultSMS-Handling": "0=continueTransaction 1=releaseTransaction",
    "PositionMethodFailure-Diagnostic": "0=congestion 1=insufficientResources 2=insufficientMeasurementData "
        "3=inconsistentMeasurementData 4=locationProcedureNotCompleted "
        "5=locationProcedureNotSupportedByTargetMS 6=qoSNotAttainable "
        "7=positionMethodNotAvailableInNetwork 8=positionMethodNotAvailableInLocationArea",
    "UnauthorizedLCSClient-Diagnostic": "0=noAdditionalInformation 1=clientNotInMSPrivacyExceptionList "
        "2=callToClientNotSetup 3=privacyOverrideNotApplicable 4=disallowedByLocalRegulatoryRequirements "
        "5=unauthorizedPrivacyClass 6=unauthorizedCallSessionUnrelatedExternalClient "
        "7=unauthorizedCallSessionRelatedExternalClient",
}

# AddressString and its kin: a nature/plan octet before the TBCD digits.
ADDRESS_TYPES = {"MSISDN", "ISDN-AddressString", "AddressString", "RecordingEntity", "SCFAddress"}
# Numbers with headers of their own (TS 24.008, TS 23.040): left in hexadecimal.
OWN_HEADER_TYPES = {"CallingNumber", "SmsTpDestinationNumber"}

UNIVERSAL_NAMES = {"[UNIVERSAL 2]": "INTEGER", "[UNIVERSAL 4]": "OCTET_STRING",
                   "[UNIVERSAL 6]": "OBJECT_IDENTIFIER"}

HEADER = """\
# Tag map: 3GPP TS 32.298 packet-switched charging records (GPRSRecord).
# Generated by tagmap/make_3gpp_map.py from a table of the public 3GPP
# modules (TS 32.298 v18.2.0, with the older ggsnPDPRecord [21] and
# egsnPDPRecord [70]); edit the script, not this file.
#
# The format (tagmap/FORMAT.md has it in full):
#   PATH  FIELD  [FORM]         one field; `#` starts a comment
#   PATH     tags from the top-level record down, joined by `/`: [79] context 79,
#            [APPLICATION 3], [PRIVATE 2], [UNIVERSAL 16] or a universal tag's
#            listing name with `_` for a blank (SEQUENCE, OCTET_STRING); `*` is
#            every element of a SEQUENCE OF / SET OF
#   FIELD    the name shown beside the tag; `-` for none
#   FORM     hex integer enumerated text tbcd isdn bcd-timestamp ipv4 ipv6
#            plmn-id; `enumerated` takes value=name items or @ValueList;
#            `@Type` makes the field of a named type: its fields are the type's
#   values NAME value=name ...   a value list for `enumerated @NAME`
#   type NAME ... end            a named type; the paths inside start below
#                                the field that has the type
#
# Choices: AddressString fields (MSISDN, RecordingEntity...) are `isdn`;
# BIT STRINGs, CallingNumber and SmsTpDestinationNumber stay `hex`; BOOLEAN
# is an enumerated false/true; enumerated types the modules give no names
# show their numbers.
"""


class Node:
    def __init__(self):
        self.field = "-"
        self.asn1 = ""
        self.form = ""
        self.tag = ""
        self.children = collections.OrderedDict()
        self.signature = None


def form_of(asn1, form):
    if form == "constructed":
        return ""
    if form == "tbcd" and asn1 in ADDRESS_TYPES:
        return "isdn"
    if form == "tbcd" and asn1 in OWN_HEADER_TYPES:
        return "hex"
    if form == "bitstring":
        return "hex"
    if form == "enumerated":
        return "enumerated @" + asn1 if asn1 in VALUES else "enumerated"
    return form


def step_text(step):
    return UNIVERSAL_NAMES.get(step, step)


def read_records(path):
    records = collections.OrderedDict()
    with open(path, encoding="utf-8") as table:
        next(table)
        for line in table:
            record, where, tag, field, asn1, form = line.rstrip("\n").split("\t")
            root = records.setdefault(record, Node())
            node = root
            for step in where.split("/") if where else []:
                node = node.children.setdefault(step_text(step), Node())
            # A record is named by its CHOICE identifier, an element of a
            # SEQUENCE OF by its type.
            node.field = field
            if where == "":
                node.field = RECORD_NAMES[record]
                node.tag = "[%s]" % tag.split()[1]
            elif field == "(element)":
                node.field = asn1
            node.asn1 = asn1
            node.form = form_of(asn1, form)
    return records


def signature(node):
    if node.signature is None:
        node.signature = tuple((step, child.field, child.form, signature(child))
                               for step, child in node.children.items())
    return node.signature


def type_name(asn1):
    return asn1.replace("SEQUENCE OF ", "ListOf")


def choose_types(records):
    """Named types: structures that occur twice or more, other than a bare
    SEQUENCE OF; each with a name and the node that shows its fields."""
    uses = collections.defaultdict(list)

    def visit(node):
        for child in node.children.values():
            if child.children:
                uses[signature(child)].append(child)
            visit(child)

    for root in records.values():
        visit(root)
    names, shown, taken = {}, {}, set()
    for sig, nodes in uses.items():
        wrapper = len(sig) == 1 and sig[0][0] == "*"
        if len(nodes) < 2 or wrapper:
            continue
        base = type_name(collections.Counter(node.asn1 for node in nodes).most_common(1)[0][0])
        name, n = base, 2
        while name in taken:
            name, n = "%s-%d" % (base, n), n + 1
        taken.add(name)
        names[sig] = name
        shown[sig] = nodes[0]
    return names, shown


def lines_of(node, prefix, names, out, used):
    for step, child in node.children.items():
        path = prefix + step
        sig = signature(child) if child.children else None
        if sig in names:
            out.append((path, child.field, "@" + names[sig]))
            used.append(sig)
            continue
        out.append((path, child.field, child.form))
        lines_of(child, path + "/", names, out, used)


def write(out, rows):
    width = max((len(path) for path, _, _ in rows), default=0) + 2
    for path, field, form in rows:
        line = path.ljust(width) + field
        if form:
            line = line.ljust(width + 34) + " " + form
        out.write(line.rstrip() + "\n")


def main():
    records = read_records(sys.argv[1])
    names, shown = choose_types(records)
    out = sys.stdout
    out.write(HEADER)
    used_values = sorted({form.split("@")[1] for form in enumerated_forms(records)})
    out.write("\n# Value lists\n")
    for name in used_values:
        out.write("values %s %s\n" % (name, VALUES[name]))
    bodies, order, seen = {}, [], set()
    record_rows = []
    for record, root in records.items():
        used = []
        rows = []
        top = root.tag
        rows.append((top, root.field, ""))
        lines_of(root, top + "/", names, rows, used)
        record_rows.append((record, rows))
        pending = list(used)
        while pending:
            sig = pending.pop(0)
            if sig in seen:
                continue
            seen.add(sig)
            order.append(sig)
            body, inner = [], []
            lines_of(shown[sig], "", names, body, inner)
            bodies[sig] = body
            pending.extend(inner)
    out.write("\n# Types\n")
    for sig in sorted(order, key=lambda s: names[s]):
        out.write("\ntype %s\n" % names[sig])
        write(out, bodies[sig])
        out.write("end\n")
    for record, rows in record_rows:
        out.write("\n# %s\n" % record)
        write(out, rows)


def enumerated_forms(records):
    forms = set()

    def visit(node):
        if node.form.startswith("enumerated @"):
            forms.add(node.form)
        for child in node.children.values():
            visit(child)

    for root in records.values():
        visit(root)
    return forms


if __name__ == "__main__":
    main()
