// The callbacks by which libsndfile reads or writes a file of ours.
#pragma once

#include <cstdint>
#include <cstdio>

#include <sndfile.h>

/// Those of `TFile`, which is their user data; what it lacks, `Read` or `Write`, moves nothing.
template <class TFile> SF_VIRTUAL_IO* GetSoundCallbacks() {
    static SF_VIRTUAL_IO callbacks{
        [](void* user) -> sf_count_t { return static_cast<TFile*>(user)->GetLength(); },
        [](sf_count_t offset, int whence, void* user) -> sf_count_t {
            TFile& file = *static_cast<TFile*>(user);
            std::int64_t base = 0;
            if (whence == SEEK_CUR) base = file.GetPosition();
            if (whence == SEEK_END) base = file.GetLength();
            std::int64_t position = 0;
            if (__builtin_add_overflow(base, offset, &position)) return -1;
            return file.Seek(position);
        },
        []([[maybe_unused]] void* buffer, [[maybe_unused]] sf_count_t count,
           [[maybe_unused]] void* user) -> sf_count_t {
            if constexpr (requires(TFile & file) { file.Read(buffer, count); }) {
                return static_cast<TFile*>(user)->Read(buffer, count);
            } else {
                return 0;
            }
        },
        []([[maybe_unused]] const void* buffer, [[maybe_unused]] sf_count_t count,
           [[maybe_unused]] void* user) -> sf_count_t {
            if constexpr (requires(TFile & file) { file.Write(buffer, count); }) {
                return static_cast<TFile*>(user)->Write(buffer, count);
            } else {
                return 0;
            }
        },
        [](void* user) -> sf_count_t { return static_cast<TFile*>(user)->GetPosition(); }};
    return &callbacks;
}
