#pragma once

#include <QString>

class SafeFileWriter;

/// Why a save failed, in the user's words: the cause first (a full disk, a used-up quota, a
/// missing permission, a read-only disk, a missing folder), with the system's own reason, then
/// what became of the file on the disk.
class SaveFailureMessage
{
public:
    /// The message for the document named `name` whose save through `writer` failed.
    static QString of(const QString& name, const SafeFileWriter& writer);
};
