// Lets a job ask whether Ctrl-C was pressed, so that it can clean up before it ends.
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
