// The base of writers: references and positions.
#include "serial/SerialTest.h"

#include <vorlund/TextWriter.h>
#include <vorlund/VarWriter.h>

#include <type_traits>
#include <utility>

namespace vorlund::test {
namespace {

class CPlainWriter : public CWriter {
public:
    explicit CPlainWriter(IOutputStream* stream) : CWriter(stream) {}
    CPlainWriter(const CPlainWriter&) = default;
    CPlainWriter& operator=(const CPlainWriter&) = default;
    using CWriter::operator=;
};

static_assert(!std::is_constructible_v<CWriter, IOutputStream*>);
static_assert(std::is_base_of_v<CClassObject, CWriter>);
static_assert(std::is_base_of_v<CWriter, CVarWriter> && std::is_base_of_v<CWriter, CTextWriter>);
static_assert(sizeof(CWriter) == 2 * sizeof(void*) && sizeof(CVarWriter) == sizeof(CWriter));

using Writer = CSerialTest;

TEST_F(Writer, HoldsOneReference) {
    const auto stream = Target();
    {
        const CPlainWriter writer(stream.Get());
        EXPECT_EQ(ReferencesOf(stream.Get()), 2);
    }
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
    EXPECT_TRUE(log_.empty());
}

TEST_F(Writer, CopiesShareTheStream) {
    const auto stream = Target();
    {
        const CPlainWriter writer(stream.Get());
        const CPlainWriter copy(writer);
        EXPECT_EQ(ReferencesOf(stream.Get()), 3);
    }
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

TEST_F(Writer, AssignmentTakesTheOthersStream) {
    const auto first = Target();
    const auto second = Target();
    CPlainWriter writer(first.Get());
    const CPlainWriter other(second.Get());
    EXPECT_EQ(&(writer = other), &writer);
    EXPECT_EQ(ReferencesOf(first.Get()), 1);
    EXPECT_EQ(ReferencesOf(second.Get()), 3);
    writer.Seek(5);
    EXPECT_EQ(first->position, 0);
    EXPECT_EQ(second->position, 5);
}

TEST_F(Writer, AssignmentToItselfChangesNothing) {
    CPlainWriter writer(Target().Get());
    CPlainWriter& same = writer;
    writer = same;
    static_cast<CWriter&>(writer) = same;
    writer.Seek(7);
    EXPECT_EQ(writer.Tell(), 7u);
}

TEST_F(Writer, AssignmentOfTheSameStreamKeepsIt) {
    const int before = CLiveObject::GetCount();
    {
        auto stream = Target();
        CPlainWriter writer(stream.Get());
        const CPlainWriter other(stream.Get());
        stream.Reset();
        writer = other;
        EXPECT_EQ(CLiveObject::GetCount(), before + 1);
        writer.Seek(3);
        EXPECT_EQ(writer.Tell(), 3u);
    }
    EXPECT_EQ(CLiveObject::GetCount(), before);
}

TEST_F(Writer, AssignmentReleasesTheLastReference) {
    const int before = CLiveObject::GetCount();
    CPlainWriter writer(Target().Get());
    const CPlainWriter other(Target().Get());
    EXPECT_EQ(CLiveObject::GetCount(), before + 2);
    writer = other;
    EXPECT_EQ(CLiveObject::GetCount(), before + 1);
}

TEST_F(Writer, AssignmentThroughTheBaseTakesTheStreamOnly) {
    const auto first = Target();
    const auto second = Target();
    CTextWriter wide(first.Get(), CHAR_FORMAT_UTF16, LINE_BREAK_LF);
    const CTextWriter narrow(second.Get(), CHAR_FORMAT_8BIT, LINE_BREAK_CRLF);
    static_cast<CWriter&>(wide) = narrow;
    wide.Write(VRL_L("\n"));
    EXPECT_EQ(second->bytes, (TBytes{10, 0}));
    wide = narrow;
    wide.Write(VRL_L("\n"));
    EXPECT_EQ(second->bytes, (TBytes{10, 0, 13, 10}));
}

/// The operation is virtual: a class of an application may replace it.
class CCountingWriter : public CPlainWriter {
public:
    using CPlainWriter::CPlainWriter;
    CWriter& operator=(const CWriter&) override {
        ++assigned;
        return *this;
    }
    int assigned = 0;
};

TEST_F(Writer, AssignmentIsVirtual) {
    const auto stream = Target();
    CCountingWriter writer(stream.Get());
    const CPlainWriter other(stream.Get());
    static_cast<CWriter&>(writer) = other;
    EXPECT_EQ(writer.assigned, 1);
}

TEST_F(Writer, PositionsAreTheStreams) {
    const auto stream = Target();
    CPlainWriter writer(stream.Get());
    stream->position = 12;
    EXPECT_EQ(writer.Tell(), 12u);
    writer.Seek(0x7FFFFFFFFFFFFFFF);
    EXPECT_EQ(stream->position, 0x7FFFFFFFFFFFFFFF);
    writer.Seek(~std::uint64_t{0});
    EXPECT_EQ(stream->position, -1);
    EXPECT_EQ(writer.Tell(), ~std::uint64_t{0});
    EXPECT_EQ(log_, (TCallLog{"Seek 9223372036854775807", "Seek -1"}));
}

TEST_F(Writer, DiesThroughItsRoot) {
    const auto stream = Target();
    CClassObject* const writer = new CVarWriter(stream.Get());
    EXPECT_EQ(ReferencesOf(stream.Get()), 2);
    delete writer;
    EXPECT_EQ(ReferencesOf(stream.Get()), 1);
}

TEST_F(Writer, RaisesWhatTheStreamsEndRaises) {
    // A stream that outlives the library raises when its last reference goes.
    auto* const writer = new CVarWriter(Make<CMemoryOutputStream>().Get());
    v.Close();
    EXPECT_EQ(Outcome([&] { delete writer; }),
              "CBugException vorlund::CObjectCounter::OnDestroyObject src/vorlund/api/ObjectCounter:117 Not "
              "initialized");
}

} // namespace
} // namespace vorlund::test
