// The end of a run that counted what it found: the summary of -diagnose and
// -check, the standard-error line of every other run, and the exit status.
#pragma once

struct RunContext;
struct DiagnoseTally;

// Under -diagnose or -check: the summary at the end of the listing.
void printDiagnosis(RunContext* context, const DiagnoseTally& tally);

// The exit status: under -diagnose or -check kDiagnosisFound when anything
// was found and the run wasn't stopped by a fault of its own (a premature
// end of the encoding is a finding); else `status` unchanged.
int diagnosisStatus(const DiagnoseTally& tally, bool diagnosing, int status);

// Without -diagnose and -check: one line on standard error with the counts
// when a misencoding was reported or a failed value ended a level.
void printFindingsLine(const DiagnoseTally& tally);
