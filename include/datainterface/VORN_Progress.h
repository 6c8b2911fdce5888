// SPDX-License-Identifier: MIT
/// One progress bar for nested work, and the way in which a cancel travels back.
#pragma once
#include "datainterface/ProgressCallback.h"
#include "datainterface/export.h"

/// A scope guard that makes the one bar and closes it. All else is static, so that deep code can
/// report without being handed an object. Each level of work counts 0 to 100 of its own; the stack
/// of sections maps that onto the bar.
///
/// The bar is the host's (HostDialogs) where it set one, else Qt's dialog. Under the testing flag,
/// and with neither dialogs of the host nor a QApplication, no bar is made. Without a bar the
/// reporting operations raise "Progress bar has not been created"; only Close, UsingProgressBar and
/// CheckForCancel tolerate that. Under the testing flag all of them return true at once.
class DATAINTERFACE_EXPORT VORN_Progress {
public:
    /// Makes the bar.
    VORN_Progress(const char *title, const char *label, const char *cancelText);
    ~VORN_Progress();
    VORN_Progress(const VORN_Progress &) = delete;
    VORN_Progress &operator=(const VORN_Progress &) = delete;

    /// Takes the bar away, and all sections with it.
    static void Close();
    /// Whether there is a bar.
    static bool UsingProgressBar();
    static bool SetProgressText(const char *text);
    static void SetProgressButtonText(const char *text, bool resetOnCancel);
    /// A negative percent only sets the text (unless null) and polls. False: the user cancelled.
    static bool UpdateProgress(int percent, const char *text);
    /// Polls for cancel without moving the bar; both arguments are ignored.
    static bool CheckForCancel(int percent, const char *text);
    static bool SetProgressBarSubSection(int lower, int upper);
    /// From the innermost section's old upper end to `upper`.
    static bool SetNextProgressBarSubSection(int upper);
    /// A deeper level of work begins: it counts 0 to 100 over the present section.
    static bool PushProgressBarSection();
    /// That level ends.
    static bool PopProgressBarSection();
    /// Whether the user has cancelled.
    static bool ProgressBarCanceled();
};
