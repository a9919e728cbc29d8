#pragma once

/// The system beep, the only sound the editor makes. Counts its beeps so that a run
/// without speakers can tell that it sounded.
class SystemBeep
{
public:
    using Sound = void (*)();

    static void beep();
    /// How many beeps this process has sounded.
    static int count();
    /// What a beep plays; the application hands in the desktop's beep when it starts.
    /// Until then (and with none) a beep is only counted.
    static void setSound(Sound sound);
};
