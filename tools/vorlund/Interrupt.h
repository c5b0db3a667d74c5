// Lets a job ask whether Ctrl-C was pressed, so that it can clean up before it ends.
#pragma once

/// Catches the interrupt, the termination signal and the end of the terminal while it lives, unless the
/// program was started to ignore them.
class CInterrupt {
public:
    CInterrupt();
    CInterrupt(const CInterrupt&) = delete;
    CInterrupt& operator=(const CInterrupt&) = delete;
    ~CInterrupt();

    bool IsRaised() const;
};
