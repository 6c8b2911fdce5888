// SPDX-License-Identifier: MIT
/// One progress bar for nested operations, and the cancel that its user requests.
#pragma once
#include "datainterface/ProgressCallback.h"
#include "datainterface/export.h"

/// A scope guard that creates the bar and closes it. All other operations are static, so that code
/// at any depth can report without a parameter. Each level of work counts from 0 to 100; the stack
/// of sections maps that onto the bar.
///
/// The bar is the host's if it set HostDialogs, otherwise Qt's dialog. No bar is created under the
/// testing flag, nor without both dialogs of the host and a QApplication. Without a bar the
/// reporting operations raise "Progress bar has not been created"; only Close, UsingProgressBar and
/// CheckForCancel do not. Under the testing flag all of them return true immediately.
class DATAINTERFACE_EXPORT VORN_Progress {
public:
    /// Creates the bar.
    VORN_Progress(const char *title, const char *label, const char *cancelText);
    ~VORN_Progress();
    VORN_Progress(const VORN_Progress &) = delete;
    VORN_Progress &operator=(const VORN_Progress &) = delete;

    /// Closes the bar and removes all sections.
    static void Close();
    /// Whether there is a bar.
    static bool UsingProgressBar();
    static bool SetProgressText(const char *text);
    static void SetProgressButtonText(const char *text, bool resetOnCancel);
    /// Moves the bar, sets the text unless it is null, and polls. A negative percent does not move
    /// the bar. Returns false when the user cancelled.
    static bool UpdateProgress(int percent, const char *text);
    /// Polls for cancel without moving the bar; both arguments are ignored.
    static bool CheckForCancel(int percent, const char *text);
    static bool SetProgressBarSubSection(int lower, int upper);
    /// Moves the innermost section: from its present upper end to `upper`.
    static bool SetNextProgressBarSubSection(int upper);
    /// Begins a deeper level of work, which counts from 0 to 100 over the present section.
    static bool PushProgressBarSection();
    /// Ends that level.
    static bool PopProgressBarSection();
    /// Whether the user has cancelled.
    static bool ProgressBarCanceled();
};
