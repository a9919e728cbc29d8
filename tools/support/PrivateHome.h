#pragma once

#include <QString>

/// A throw-away home folder for a program that is not the editor a user runs: the tests, the
/// benchmarks and the screenshot tools. Made in the constructor, before the application
/// object exists, with HOME and the XDG folders pointing into it and the offscreen display
/// chosen, so that nothing such a program does reads or writes a real user's settings or
/// files; removed with everything in it by the destructor.
class PrivateHome
{
public:
    /// `prefix` names the program in the folder's name ($TMPDIR/tessaran-PREFIX-XXXXXX).
    explicit PrivateHome(const char* prefix);
    ~PrivateHome();
    PrivateHome(const PrivateHome&) = delete;
    PrivateHome& operator=(const PrivateHome&) = delete;

    QString path() const { return _path; }

private:
    QString _path;
};
