/// \file
/// The exception family: `CException`, its sixteen subclasses and the records from which the library raises
/// them.
#pragma once

#include <vorlund/Debug.h>
#include <vorlund/Platform.h>

/// The one table of the family: X(value, class, enumerator), in the order of the values.
#define VRL_EXCEPTION_SUBCLASSES(X)                                                                          \
    X(1, CClassNotFoundException, EXCEPTION_TYPE_CLASS_NOT_FOUND)                                            \
    X(2, COutOfMemoryException, EXCEPTION_TYPE_OUT_OF_MEMORY)                                                \
    X(3, CFileAccessException, EXCEPTION_TYPE_FILE_ACCESS)                                                   \
    X(4, CDataFormatException, EXCEPTION_TYPE_DATA_FORMAT)                                                   \
    X(5, CInvalidStateException, EXCEPTION_TYPE_INVALID_STATE)                                               \
    X(6, CInvalidParameterException, EXCEPTION_TYPE_INVALID_PARAMETER)                                       \
    X(7, CObjectNotFoundException, EXCEPTION_TYPE_OBJECT_NOT_FOUND)                                          \
    X(8, CDeviceFailedException, EXCEPTION_TYPE_DEVICE_FAILED)                                               \
    X(9, COperationNotSupportedException, EXCEPTION_TYPE_OPERATION_NOT_SUPPORTED)                            \
    X(10, CBugException, EXCEPTION_TYPE_BUG)                                                                 \
    X(11, CIOException, EXCEPTION_TYPE_IO)                                                                   \
    X(12, CBadIndexException, EXCEPTION_TYPE_BAD_INDEX)                                                      \
    X(13, CNullPtrException, EXCEPTION_TYPE_NULL_PTR)                                                        \
    X(14, CFailedException, EXCEPTION_TYPE_FAILED)                                                           \
    X(15, CTimeoutException, EXCEPTION_TYPE_TIMEOUT)                                                         \
    X(16, CDataNotSupportedException, EXCEPTION_TYPE_DATA_NOT_SUPPORTED)

namespace vorlund {

class CString;

/// The numeric type of an exception.
enum TExceptionType : int {
    EXCEPTION_TYPE_GENERIC = 0,
#define VRL_ENUMERATOR(value, className, enumerator) enumerator = value,
    VRL_EXCEPTION_SUBCLASSES(VRL_ENUMERATOR)
#undef VRL_ENUMERATOR
};

/// Where and why something failed. Callers and tests compare these values, which stay the same when the code
/// around them moves: `file` and `line` are part of the failure, not a place in today's sources.
struct TFailure {
    /// Fully qualified method name, for example "vorlund::CClassStore::CreateObject".
    const wchar* method;
    /// Source file text, for example "src/vorlund/api/ClassStore".
    const wchar* file;
    /// Source line.
    int line;
    /// Human-readable reason; may be the empty text.
    const wchar* reason;
};

/// The base of every exception of the library, thrown by value and caught by reference.
///
/// \warning It does not derive from `std::exception`, so `catch (const std::exception&)` does not see it:
/// catch `CException` as well. Where memory runs out, the library raises `std::bad_alloc` in some places and
/// `COutOfMemoryException` in others, as each operation says.
///
///
/// Building one reports it at once: the line of `ToString` goes to `DEBUG_MESSAGE_OUTPUT`, and for a bug
/// exception also to `DEBUG_MESSAGE_BOX`, whose default is modal, so the raising thread waits until the box
/// is closed. Copying an exception prints nothing.
///
/// The three texts are not copied: they must outlive the exception. Reasons that name a path point into one
/// buffer of the process, which the next such failure overwrites: copy them to keep them.
///
/// \code{.cpp}
/// try {
///     const CInputStreamSelector file(VRL_L("missing.wav"));
/// } catch (const CFileAccessException& error) {
///     std::printf("%s\n", TextToUtf8(error.GetReason()).c_str());
///     // prints Cannot open 'missing.wav' for reading
/// }
/// \endcode
class VRL_API CException {
public:
    /// \param method  fully qualified name of the raising method
    /// \param file    source file text
    /// \param line    source line
    /// \param reason  human-readable reason, may be the empty text
    /// \param type    the exception's type
    CException(const wchar* method, const wchar* file, int line, const wchar* reason, TExceptionType type);
    CException(const CException&) = default;
    CException& operator=(const CException&) = default;
    virtual ~CException();

    /// The type, and the texts and the line as given to the constructor.
    TExceptionType GetType() const { return type_; }
    const wchar* GetReason() const { return reason_; }
    int GetLine() const { return line_; }
    const wchar* GetFile() const { return file_; }
    const wchar* GetMethod() const { return method_; }

    /// The class name of `type` ("CBugException"), or null for a value outside 0 to 16.
    static const wchar* GetTypeName(TExceptionType type);

    /// The one-line description "Exception: type=%s | method=%s | file=%s | line=%d | reason=%s", cut at 255
    /// units.
    CString ToString() const;

    /// Sends that line to a destination; an unknown one prints nothing.
    void PrintMessage(TDebugMessageType destination) const;

private:
    const wchar* method_;
    const wchar* file_;
    int line_;
    const wchar* reason_;
    TExceptionType type_;
};

#define VRL_SUBCLASS(value, className, enumerator)                                                           \
    /** A `CException` of type `enumerator`; adds nothing but the type. */                                   \
    class VRL_API className : public CException {                                                            \
    public:                                                                                                  \
        className(const wchar* method, const wchar* file, int line, const wchar* reason)                     \
            : CException(method, file, line, reason, enumerator) {}                                          \
        className(const className&) = default;                                                               \
        className& operator=(const className&) = default;                                                    \
        ~className() override;                                                                               \
    };
VRL_EXCEPTION_SUBCLASSES(VRL_SUBCLASS)
#undef VRL_SUBCLASS

/// Raises an exception of class `TException` from a failure record.
template <class TException> [[noreturn]] void Raise(const TFailure& failure) {
    throw TException(failure.method, failure.file, failure.line, failure.reason);
}

/// The same with a reason made at run time; `reason` must outlive the exception.
template <class TException> [[noreturn]] void Raise(const TFailure& failure, const wchar* reason) {
    throw TException(failure.method, failure.file, failure.line, reason);
}

} // namespace vorlund
