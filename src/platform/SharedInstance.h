#pragma once

#include <QtGlobal>

#include <memory>
#include <utility>

/// Owns one object of the application's composition root and makes it the one that T's
/// shared accessor (sharedT, standardUserDefaults, defaultCenter) answers, for as long as
/// this lives. A root built while another one lives (a test's own, with its own settings
/// file) stands in for it until it goes; then the earlier objects answer again.
template <class T> class SharedInstance
{
public:
    explicit SharedInstance(std::unique_ptr<T> object)
        : _object(std::move(object))
        , _previous(std::exchange(installed(), _object.get()))
    {}
    /// The object goes while it is still the shared one: what it takes down with it may
    /// still ask for it.
    ~SharedInstance()
    {
        _object.reset();
        installed() = _previous;
    }
    SharedInstance(const SharedInstance&) = delete;
    SharedInstance& operator=(const SharedInstance&) = delete;

    T& operator*() const { return *_object; }
    T* operator->() const { return _object.get(); }

    /// The object the newest living root installed; the program stops with a message when
    /// no root lives (a tool that builds none must make the objects it needs itself).
    static T& object()
    {
        T* shared = installed();
        if (!shared) {
            qFatal("%s: asked for before the application's root was built", Q_FUNC_INFO);
        }
        return *shared;
    }

private:
    static T*& installed()
    {
        static T* shared = nullptr;
        return shared;
    }

    std::unique_ptr<T> _object;
    T* _previous;
};
