// Ctrl-C as a question, so that a job can clean up before it ends.
#pragma once

/// Catches the interrupt and the termination signal while it lives.
class CInterrupt {
public:
    CInterrupt();
    CInterrupt(const CInterrupt&) = delete;
    CInterrupt& operator=(const CInterrupt&) = delete;
    ~CInterrupt();

    bool IsRaised() const;
};
