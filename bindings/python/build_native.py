"""Compiles vorlund._native: the files of native/, and what Python calls of the C interface.

The library is found, in this order:
- in the build folder that VORLUND_BUILD_DIR names, with the headers of the sources that it was made from;
- in the installation that VORLUND_ROOT names (its include and lib);
- by pkg-config, as vorlund-c;
- beside this folder, when that is in the tree of the sources and the preset linux is built;
- where the compiler looks by itself.

With VORLUND_BUNDLE=1 the extension looks for the library in the folder lib of the package, which scripts/wheel.sh fills.
"""
import os
import re
import shlex
import subprocess
from pathlib import Path

from cffi import FFI

HERE = Path(__file__).resolve().parent

# As in the headers; the compiler compares them.
INTERFACE = """
typedef struct vorlund_stream_object* vorlund_stream;
typedef struct vorlund_report_object* vorlund_report;
typedef struct vorlund_sink_object* vorlund_sink;
typedef struct vorlund_writer_object* vorlund_writer;
typedef struct vorlund_output_object* vorlund_output;
typedef struct vorlund_input_object* vorlund_input;
typedef struct vorlund_device_list_object* vorlund_device_list;

typedef struct vorlund_audio_format {
    uint32_t size;
    uint32_t sample_format;
    uint32_t channels;
    uint32_t rate;
} vorlund_audio_format;
typedef struct vorlund_error {
    uint32_t size;
    int32_t code;
    int32_t exception_type;
    int32_t line;
    uint32_t system_code;
    int32_t callback_code;
    const char* type;
    const char* method;
    const char* file;
    const char* reason;
    const char* cause;
    ...;
} vorlund_error;
typedef struct vorlund_report_entry {
    uint32_t size;
    int32_t outcome;
    int32_t depth;
    int32_t exception_type;
    uint32_t class_id[4];
    uint64_t bytes_read;
    double seconds;
} vorlund_report_entry;
typedef struct vorlund_levels {
    uint32_t size;
    uint32_t reserved;
    uint64_t frames;
    double peak;
    uint64_t peak_frame;
    double true_peak;
    double rms;
    double integrated;
    double range;
    double momentary_max;
    double short_term_max;
    uint64_t clipped_samples;
    uint64_t silent_frames;
    uint64_t not_finite;
} vorlund_levels;
typedef struct vorlund_device_info {
    uint32_t size;
    int32_t kind;
    int32_t is_default;
    uint32_t channels;
    uint32_t rate;
    uint32_t reserved;
} vorlund_device_info;

int32_t vorlund_open(uint32_t flags);
int32_t vorlund_close(void);
int32_t vorlund_version(int32_t* library, int32_t* c_interface);
int32_t vorlund_last_error(vorlund_error* record);
int32_t vorlund_release(void* handle);
int32_t vorlund_handle_count(uint32_t* count);

int32_t vorlund_stream_seek_frame(vorlund_stream stream, uint64_t frame);
int32_t vorlund_stream_tell_frame(vorlund_stream stream, uint64_t* frame);
int32_t vorlund_stream_chain_count(vorlund_stream stream, uint32_t* count);
int32_t vorlund_stream_chain_name(vorlund_stream stream, uint32_t index, char* text, uint32_t room, uint32_t* length);

int32_t vorlund_report_count(vorlund_report report, uint32_t* count);
int32_t vorlund_report_get_entry(vorlund_report report, uint32_t index, vorlund_report_entry* entry);
int32_t vorlund_report_entry_text(vorlund_report report, uint32_t index, int32_t field, char* text, uint32_t room,
                                  uint32_t* length);
int32_t vorlund_report_text(vorlund_report report, int32_t field, char* text, uint32_t room, uint32_t* length);

int32_t vorlund_measure_samples(const float* samples, uint32_t frames, uint32_t channels, uint32_t rate,
                                vorlund_levels* levels);

int32_t vorlund_device_list_create(int32_t kind, vorlund_device_list* list);
int32_t vorlund_device_list_count(vorlund_device_list list, uint32_t* count);
int32_t vorlund_device_list_get(vorlund_device_list list, uint32_t index, vorlund_device_info* info);
int32_t vorlund_device_list_text(vorlund_device_list list, uint32_t index, int32_t field, char* text, uint32_t room,
                                 uint32_t* length);
int32_t vorlund_output_create(const char* id, vorlund_output* output);
int32_t vorlund_output_create_null(vorlund_output* output);
int32_t vorlund_output_create_file(const char* path, vorlund_output* output);
int32_t vorlund_output_open(vorlund_output output, const vorlund_audio_format* format, double latency);
int32_t vorlund_output_close(vorlund_output output);
int32_t vorlund_output_play(vorlund_output output, vorlund_stream stream);
int32_t vorlund_output_wait_streams(vorlund_output output, int32_t milliseconds);
int32_t vorlund_output_stream_error(vorlund_output output, char* text, uint32_t room, uint32_t* length);
int32_t vorlund_output_drain(vorlund_output output, int32_t* is_drained);
int32_t vorlund_output_delay(vorlund_output output, uint64_t* frames);
int32_t vorlund_output_set_paused(vorlund_output output, int32_t is_paused);
int32_t vorlund_output_set_volume(vorlund_output output, float volume);
int32_t vorlund_output_volume(vorlund_output output, float* volume);
int32_t vorlund_output_position(vorlund_output output, uint64_t* frames);
int32_t vorlund_input_create(const char* id, vorlund_input* input);
int32_t vorlund_input_create_null(vorlund_input* input);
int32_t vorlund_input_open(vorlund_input input, const vorlund_audio_format* format, double latency);
int32_t vorlund_input_get_stream(vorlund_input input, vorlund_stream* stream);
"""

CALLBACKS = """
extern "Python+C" {
int32_t python_read(void* object, void* buffer, uint32_t size, uint32_t* count);
int32_t python_seek(void* object, const int64_t* position);
int32_t python_length(void* object, int64_t* length);
int32_t python_write(void* object, const void* bytes, uint32_t count);
int32_t python_flush(void* object);
void python_release(void* object);
}
"""


def constants():
    """The enumerators of the headers as integers whose values the compiler fills in."""
    names = ["VORLUND_SAMPLE_KEEP", "VORLUND_OPEN_INSTALLED_PLUGINS", "VORLUND_OPEN_WITHOUT_BOXES"]
    names += [f"VORLUND_SAMPLE_{name}" for name in ("8BIT", "16BIT", "32BIT", "FLOAT", "24BIT")]
    errors = "CLASS_NOT_FOUND OUT_OF_MEMORY FILE_ACCESS DATA_FORMAT INVALID_PARAMETER NOT_SUPPORTED IO TIMEOUT"
    errors += " DATA_NOT_SUPPORTED DEVICE_FAILED FAILED HANDLE BUSY ARGUMENT NOT_OPEN"
    names += [f"VORLUND_ERROR_{name}" for name in errors.split()]
    return "".join(f"#define {name} ...\n" for name in names)


def from_build(folder):
    """A build folder of CMake."""
    folder = Path(folder).resolve()
    sources = re.search(r"^CMAKE_HOME_DIRECTORY:INTERNAL=(.*)$", (folder / "CMakeCache.txt").read_text(), re.M)[1]
    libraries = str(folder / "bin")
    return {
        "include_dirs": [f"{sources}/bindings/c/include"],
        # Import libraries for Windows are beside it.
        "library_dirs": [libraries, str(folder / "lib")],
        "runtime": libraries,
    }


def from_package():
    """What pkg-config says, or None."""
    try:
        command = [os.environ.get("PKG_CONFIG", "pkg-config"), "--cflags", "--libs", "vorlund-c"]
        words = shlex.split(subprocess.run(command, check=True, capture_output=True, text=True).stdout)
    except (OSError, subprocess.CalledProcessError):
        return None
    folders = [word[2:] for word in words if word.startswith("-L")]
    return {
        "include_dirs": [word[2:] for word in words if word.startswith("-I")],
        "library_dirs": folders,
        "runtime": folders[0] if folders else None,
    }


def settings():
    if build := os.environ.get("VORLUND_BUILD_DIR"):
        return from_build(build)
    if root := os.environ.get("VORLUND_ROOT"):
        return {"include_dirs": [f"{root}/include"], "library_dirs": [f"{root}/lib"], "runtime": f"{root}/lib"}
    if found := from_package():
        return found
    tree = HERE.parents[1] / "build" / "linux"
    if (tree / "bin" / "libvorlund-c.so").exists():
        return from_build(tree)
    return {"include_dirs": [], "library_dirs": [], "runtime": None}


found = settings()
runtime = found.pop("runtime")
if os.environ.get("VORLUND_BUNDLE") == "1":
    runtime = "$ORIGIN/lib"

ffi = FFI()
ffi.cdef(constants() + INTERFACE + (HERE / "native" / "declarations.h").read_text() + CALLBACKS)
ffi.set_source(
    "vorlund._native",
    '#include "engine.h"',
    sources=[f"native/{name}.c" for name in ("source", "read", "write")],
    depends=["native/declarations.h", "native/engine.h"],
    # A library of Python itself is for Windows, where scripts/wheel.sh names it.
    libraries=["vorlund-c", *filter(None, [os.environ.get("VORLUND_PYTHON_LIBRARY")])],
    extra_compile_args=["-std=c99", "-fvisibility=hidden"],
    extra_link_args=[f"-Wl,-rpath,{runtime}"] if runtime else [],
    **{**found, "include_dirs": [str(HERE / "native"), *found["include_dirs"]]},
)

if __name__ == "__main__":
    ffi.compile(verbose=True)
