// The kinds of files that libsndfile writes, and what can be said about how.
#pragma once

#include <vorlund/Id.h>
#include <vorlund/Platform.h>

#include <map>
#include <optional>
#include <string>

/// A kind of file, and what it can have.
struct TSoundKind {
    vorlund::CId formatId;
    /// Of libsndfile: the major format, and the subtype of those that have one alone, else 0.
    int format;
    int subtype;
    bool hasFloats;
    bool hasQuality;
    bool hasCompression;
    bool hasBitrateMode;
    /// All texts, or only the four of AIFF.
    bool hasAllTags;
};

class CEncoderOptions {
public:
    explicit CEncoderOptions(const TSoundKind& kind) : kind_(kind) {}

    /// Both as `IAudioEncoder` says.
    void SetOption(const vorlund::wchar* name, const vorlund::wchar* value);
    void SetTag(const vorlund::wchar* name, const vorlund::wchar* text);

    const TSoundKind& GetKind() const { return kind_; }
    /// Texts in UTF-8, by libsndfile's numbers.
    const std::map<int, std::string>& GetTags() const { return tags_; }

    /// A subtype of libsndfile for samples.
    std::optional<int> bits;
    std::optional<double> quality;
    std::optional<double> compression;
    std::optional<int> bitrateMode;

private:
    const TSoundKind& kind_;
    std::map<int, std::string> tags_;
};
