#pragma once

/// The system beep, the only sound the editor makes. Counts its beeps so that a run
/// without speakers can tell that it sounded.
class SystemBeep
{
public:
    static void beep();
    /// How many beeps this process has sounded.
    static int count();
};
