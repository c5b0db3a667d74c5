/// \file
/// Something that a child process could inherit, and could use without its parent's knowledge.
#pragma once

namespace vorlund::test {

/// Makes the object, which children inherit unless they are kept from it, and names it in the environment.
class CInheritedObject {
public:
    CInheritedObject();
    CInheritedObject(const CInheritedObject&) = delete;
    CInheritedObject& operator=(const CInheritedObject&) = delete;
    ~CInheritedObject();

    /// Whether a child has used it.
    bool IsUsed() const;

private:
    struct TState;
    TState* state_;
};

/// Uses the object of the parent, if it was inherited.
void UseInheritedObject();

/// How many descriptors or handles this process has.
int CountOpenObjects();

} // namespace vorlund::test
