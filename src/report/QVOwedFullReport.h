#pragma once

// Whether the next report handed over must be a full report. It is owed when reports the
// collecting agent never took were removed from the outbox (a forced scan clears it), or
// the stored report was lost to something planted at its path: the changes those reports
// held, or the base they were taken against, exist nowhere else. The debt is a marker file
// beside the stored report, so it outlives a crash; it is settled only when a full report
// reaches the outbox.

namespace tov {

class QVOwedFullReport {
public:
    static bool isOwed();
    // Records the debt; false (with an error line) when it could not be written down.
    static bool owe();
    static void settle();
};

}  // namespace tov
