#pragma once
// A flag set for as long as a scope lives, then put back as it was found, so
// that nested scopes and exceptions leave it right.

namespace zobase {

class ScopedFlag {
public:
    ScopedFlag(bool* flag, bool value) : flag_(flag), saved_(*flag) { *flag = value; }
    ~ScopedFlag() { *flag_ = saved_; }
    ScopedFlag(const ScopedFlag&) = delete;
    ScopedFlag& operator=(const ScopedFlag&) = delete;

private:
    bool* flag_;
    bool saved_;
};

}  // namespace zobase
