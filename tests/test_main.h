// What every test program does before its tests.
#pragma once

namespace skyvault::test {

/// A crash prints what it was and ends the process with a failure, instead of a box nobody answers.
void ReportCrashes();

}  // namespace skyvault::test
