#!/bin/bash
# The structure of the library: who may include what. Run by ./test; needs no build.
#   tests/abi/check_includes.sh
#
# Every file of the library stands in one layer of the table below (the first pattern that matches it), and
# includes only files of its own layer or of those under it. What a lower layer needs of the library object it
# gets through <vorlund/ObjectServices.h>, which stands with the objects and is implemented above. A file that no
# pattern matches is an error: a new public header needs its place in the table.
#
# Besides: only WindowsLean.h includes <windows.h>, only Platform.h asks for the system, public headers include no
# private ones, and private headers are named by their path from src.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

# Lowest layer first. Values and the object counter live in the folder api, although they are the ground of
# everything; the contract of the class store stands with the objects, which are made by it.
table='
platform  include/vorlund/Platform.h
platform  src/vorlund/system/WindowsLean.h
values    include/vorlund/(ClassObject|Debug|Exception|Id|String).h
math      include/vorlund/(InlineArithmetic|Matrix|Vector).h
system    include/vorlund/(BinaryLock|Event|ReadWriteLock|Timer).h
objects   include/vorlund/(ClassIds|ClassStore|Object|ObjectCounter|ObjectImpl|ObjectServices|RefPtr).h
util      include/vorlund/ObjectList.h
data      include/vorlund/(CodecClassStore|DataFormat|MediaSample|Stream|StreamFilter|StreamFilterImpl).h
data      include/vorlund/(StreamImpl|StreamSelector|File|Path|WavDecoder).h
data      include/vorlund/(AudioPcmConverters|Blob|CbVideoSource|Generators|Resource|SetFormatIsf).h
serial    include/vorlund/(BufferedReader|CharFormat|LineReader|Reader|TextReader|TextWriter|VarReader|VarWriter|Writer).h
devices   include/vorlund/(Device|DeviceClassStore|MediaObjects|VideoOutput|VideoWindow).h
api       include/vorlund/(Plugin|PluginStore|Vorlund).h
api       src/vorlund/api/PluginModule.h
api       src/vorlund/api/(BuiltinClasses|ClassIndex|ClassStore|LibraryEntry_win32|ObjectServices|PluginStore|PluginImage|Plugin(Image|Module)_(posix|win32)|Vorlund).(h|cpp)
objects   src/vorlund/api/ObjectCounter.cpp
values    src/vorlund/api/[^/]*
system    src/vorlund/system/[^/]*
util      src/vorlund/util/[^/]*
data      src/vorlund/data/[^/]*
sources   src/vorlund/data/(file|filters|resource|sources)/[^/]*
serial    src/vorlund/serial/[^/]*
devices   src/vorlund/devices/[^/]*
math      src/vorlund/math/[^/]*
'

find include src \( -name '*.h' -o -name '*.cpp' -o -name '*.inc' \) -print | LC_ALL=C sort |
    xargs awk -v table="$table" '
    BEGIN {
        rows = split(table, lines, "\n")
        for (i = 1; i <= rows; ++i) {
            if (split(lines[i], columns, " ") != 2) continue
            ++count
            layers[count] = columns[1]
            # A dot of a file name is only a dot.
            gsub(/\./, "[.]", columns[2])
            patterns[count] = "^" columns[2] "$"
        }
        split("platform math values system objects util data sources serial devices api", names, " ")
        for (i in names) height[names[i]] = i + 0
    }
    function complain(text) {
        print FILENAME ":" FNR ": " text
        failed = 1
    }
    function layer(file, i) {
        for (i = 1; i <= count; ++i) if (file ~ patterns[i]) return layers[i]
        return ""
    }
    FNR == 1 {
        ++files
        isPublic = FILENAME ~ /^include\//
        own = layer(FILENAME)
        if (own == "") complain("stands in no layer: add it to the table of tests/abi/check_includes.sh")
    }
    /_WIN32/ && FILENAME != "include/vorlund/Platform.h" {
        complain("asks for the system; write a pair _win32.cpp and _posix.cpp")
    }
    /^[ \t]*#[ \t]*include/ {
        ++includes
        if (!match($0, /["<][^">]*[">]/)) { complain("includes something that is no name"); next }
        name = substr($0, RSTART + 1, RLENGTH - 2)
        quoted = substr($0, RSTART, 1) == "\""
        if (tolower(name) ~ /^(windows|windef|winbase|winnt)[.]h$/) {
            if (FILENAME != "src/vorlund/system/WindowsLean.h") complain("includes <" name ">, which enters through WindowsLean.h only")
            next
        }
        if (!quoted && name !~ /^vorlund\//) next
        target = (quoted ? "src/" : "include/") name
        if (quoted && isPublic) { complain("is public and includes the private " name); next }
        if ((getline line < target) < 0) { complain("names " name ", which does not stand at " target); next }
        close(target)
        theirs = layer(target)
        if (own != "" && theirs != "" && height[theirs] > height[own])
            complain("belongs to " own " and includes " name " of the higher layer " theirs)
    }
    END {
        if (!files || !includes) { print "check_includes: nothing to check"; failed = 1 }
        if (!failed) print files " files and " includes " includes keep the layers"
        exit failed
    }'
