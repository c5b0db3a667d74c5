#include "MediaThread.h"

#include <atomic>
#include <new>

namespace {

/// An event that one wait resets.
class CSignal {
public:
    CSignal() = default;
    CSignal(const CSignal&) = delete;
    CSignal& operator=(const CSignal&) = delete;
    ~CSignal() {
        if (event_) CloseHandle(event_);
    }

    bool IsMade() const { return event_ != nullptr; }
    void Set() { SetEvent(event_); }
    bool Wait(DWORD milliseconds) { return WaitForSingleObject(event_, milliseconds) == WAIT_OBJECT_0; }

private:
    HANDLE event_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
};

/// Media Foundation wants a thread that has joined COM.
class CComThread {
public:
    CComThread() : hasJoined_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}
    CComThread(const CComThread&) = delete;
    CComThread& operator=(const CComThread&) = delete;
    ~CComThread() {
        if (hasJoined_) CoUninitialize();
    }

private:
    const bool hasJoined_;
};

} // namespace

/// Both sides hold it. The answer is the worker's between `asked` and `answered`, else the other one's.
struct CMediaThread::TTalk {
    std::shared_ptr<const CFileCopy> file;
    CSignal asked;
    CSignal answered;
    std::atomic<bool> isOver = false;
    TAnswer answer;

    /// Waits for the next question; false for none any more.
    bool Listen() { return asked.Wait(INFINITE) && !isOver; }

    void Answer(std::unique_ptr<CMediaReader>& reader) {
        try {
            if (!reader) {
                reader = std::make_unique<CMediaReader>(file);
                answer.format = reader->GetFormat();
            } else {
                answer.isAtEnd = !reader->Fetch(answer.piece);
            }
        } catch (const TMediaFailure& failure) {
            answer.failure = failure;
        } catch (const std::bad_alloc&) {
            answer.failure = {TMediaFailure::TKind::Failed, E_OUTOFMEMORY};
        }
    }
};

DWORD WINAPI CMediaThread::Work(void* talk) {
    HMODULE module = nullptr;
    {
        const std::unique_ptr<std::shared_ptr<TTalk>> owner(static_cast<std::shared_ptr<TTalk>*>(talk));
        const std::shared_ptr<TTalk> own = *owner;
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const wchar_t*>(&Work), &module);
        const CComThread com;
        std::unique_ptr<CMediaReader> reader;
        while (own->Listen()) {
            own->Answer(reader);
            own->answered.Set();
        }
    }
    // Whoever started this thread has counted the module once more for it.
    FreeLibraryAndExitThread(module, 0);
}

CMediaThread::CMediaThread(std::shared_ptr<const CFileCopy> file, DWORD milliseconds)
    : limit_(milliseconds), talk_(std::make_shared<TTalk>()) {
    talk_->file = std::move(file);
    auto own = std::make_unique<std::shared_ptr<TTalk>>(talk_);
    HMODULE module = nullptr;
    if (!talk_->asked.IsMade() || !talk_->answered.IsMade() ||
        !GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<const wchar_t*>(&Work),
                            &module))
        throw std::bad_alloc();
    thread_ = CreateThread(nullptr, 0, &Work, own.get(), 0, nullptr);
    if (!thread_) {
        FreeLibrary(module);
        throw std::bad_alloc();
    }
    // It is the thread's now.
    static_cast<void>(own.release());
}

CMediaThread::~CMediaThread() {
    talk_->isOver = true;
    talk_->asked.Set();
    WaitForSingleObject(thread_, isSilent_ ? 0 : limit_);
    CloseHandle(thread_);
}

const CMediaThread::TAnswer* CMediaThread::Ask() {
    if (isSilent_) return nullptr;
    talk_->asked.Set();
    if (talk_->answered.Wait(limit_)) return &talk_->answer;
    isSilent_ = true;
    return nullptr;
}
