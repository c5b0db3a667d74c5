# Made by scripts/program_pages.py; do not edit.
# Whether the first word without dashes is this one; "" for none.
function __vorlund_command_is
    set -l words (commandline -opc)
    set -l command ""
    set -l is_folder 0
    for word in $words[2..-1]
        if test $is_folder = 1
            set is_folder 0
        else if test "$word" = --plugin-path
            set is_folder 1
        else if not string match -q -- '-*' "$word"
            set command "$word"
            break
        end
    end
    # A file alone is decoded.
    if test -n "$command"; and not contains -- "$command" classes codecs convert decode devices info plasma play plugins random record repair tag window
        set command decode
    end
    test "$command" = "$argv[1]"
end
complete -c vorlund -f
complete -c vorlund -s h -l help -d 'Print this help message and exit'
complete -c vorlund -l version -d 'Print the version of the library and exit'
complete -c vorlund -s v -l verbose -d 'With --version: the build, the plug-ins and the libraries that they use, too'
complete -c vorlund -l plugin-path -x -a '(__fish_complete_directories)' -d 'Load the plug-ins of this folder too; may be given several times'
complete -c vorlund -l scan-plugins -d 'Try each plug-in in a process of its own first, and leave out those that end it'
complete -c vorlund -l no-plugins -d 'Load no plug-ins but those of --plugin-path'
complete -c vorlund -l isolate -d 'Decode in a process that can write no file and use no network'
complete -c vorlund -n '__vorlund_command_is ""' -F
complete -c vorlund -n '__vorlund_command_is ""' -a classes -d 'List the classes that objects can be made of'
complete -c vorlund -n '__vorlund_command_is ""' -a codecs -d 'List the decoders, and who reads which kind of file'
complete -c vorlund -n '__vorlund_command_is ""' -a convert -d 'Convert sound files'
complete -c vorlund -n '__vorlund_command_is ""' -a decode -d 'Decode an audio file to PCM'
complete -c vorlund -n '__vorlund_command_is ""' -a devices -d 'List what plays and records sound'
complete -c vorlund -n '__vorlund_command_is ""' -a info -d 'Tell what is in media files'
complete -c vorlund -n '__vorlund_command_is ""' -a plasma -d 'Make an animated plasma, 30 frames per second'
complete -c vorlund -n '__vorlund_command_is ""' -a play -d 'Play sound files'
complete -c vorlund -n '__vorlund_command_is ""' -a plugins -d 'List the plug-ins, and why others are not loaded'
complete -c vorlund -n '__vorlund_command_is ""' -a random -d 'Write pseudo-random bytes, the same for the same seed'
complete -c vorlund -n '__vorlund_command_is ""' -a record -d 'Record sound into a WAV file'
complete -c vorlund -n '__vorlund_command_is ""' -a repair -d 'Mend the sizes in WAV files, without touching the sound'
complete -c vorlund -n '__vorlund_command_is ""' -a tag -d 'Show and change the metadata of a WAV file, without moving the sound'
complete -c vorlund -n '__vorlund_command_is ""' -a window -d 'Show a picture, a video or moving plasma in a window'
complete -c vorlund -n '__vorlund_command_is classes' -l json -d 'Print JSON for scripts instead of a table'
complete -c vorlund -n '__vorlund_command_is codecs' -l json -d 'Print JSON for scripts instead of a table'
complete -c vorlund -n '__vorlund_command_is convert' -F
complete -c vorlund -n '__vorlund_command_is convert' -s o -l output -r -F -d 'File to write; a folder; a pattern in which {name} is the input\'s name without its ending; - for standard output'
complete -c vorlund -n '__vorlund_command_is convert' -l type -x -a 'wav aiff flac mp3 ogg opus' -d 'Kind of file (default: by the ending of the output, else wav)'
complete -c vorlund -n '__vorlund_command_is convert' -l rate -x -d 'Frames per second'
complete -c vorlund -n '__vorlund_command_is convert' -l channels -x -d 'Mix to this many channels, 1 to 8'
complete -c vorlund -n '__vorlund_command_is convert' -l bits -x -a '8 16 24 32 float' -d 'Bits of a sample: 8, 16, 24, 32 or float'
complete -c vorlund -n '__vorlund_command_is convert' -l from -x -d 'Begin at this time, like 90 or 1:30'
complete -c vorlund -n '__vorlund_command_is convert' -l to -x -d 'End at this time'
complete -c vorlund -n '__vorlund_command_is convert' -l normalise -x -d 'Bring to this loudness, in LUFS, with true peaks of at most -1 dB (needs the plug-in measure)'
complete -c vorlund -n '__vorlund_command_is convert' -l quality -x -d 'Of lossy files, from 0 to 1, the best'
complete -c vorlund -n '__vorlund_command_is convert' -l dither -d 'Add triangular noise where bits are lost'
complete -c vorlund -n '__vorlund_command_is convert' -l jobs -x -d 'Files at a time (default: as many as there are processors)'
complete -c vorlund -n '__vorlund_command_is decode' -F
complete -c vorlund -n '__vorlund_command_is decode' -s o -l output -r -F -d 'Write the PCM to this file: with a WAV header when its name ends in .wav, else as raw bytes; - for raw bytes on standard output'
complete -c vorlund -n '__vorlund_command_is decode' -l raw -d 'Write raw bytes whatever the file is called'
complete -c vorlund -n '__vorlund_command_is decode' -l format -x -a 'f32 s16 s32 u8' -d 'Convert the samples: unsigned 8, signed 16 or 32 bits, or 32-bit float'
complete -c vorlund -n '__vorlund_command_is decode' -l channels -x -a '1 2 6' -d 'Mix to mono, stereo or 5.1'
complete -c vorlund -n '__vorlund_command_is devices' -l json -d 'Print JSON for scripts instead of a table'
complete -c vorlund -n '__vorlund_command_is info' -F
complete -c vorlund -n '__vorlund_command_is info' -l json -d 'Print JSON for scripts instead of lines'
complete -c vorlund -n '__vorlund_command_is info' -l levels -d 'Measure peaks, loudness, silence and clipping (needs the plug-in measure)'
complete -c vorlund -n '__vorlund_command_is info' -l picture -r -F -d 'Write waveform and spectrogram of one file as a PNG file'
complete -c vorlund -n '__vorlund_command_is info' -l peaks -r -F -d 'Write the peaks of one file for web players, as JSON; - for standard output'
complete -c vorlund -n '__vorlund_command_is info' -l points -x -d 'At most that many points of peaks (default 1000)'
complete -c vorlund -n '__vorlund_command_is plasma' -l size -x -d 'Width and height in pixels (default 400x300)'
complete -c vorlund -n '__vorlund_command_is plasma' -l frames -x -d 'Number of frames (default 30)'
complete -c vorlund -n '__vorlund_command_is plasma' -s o -l output -r -F -d 'Write numbered PNG files when the name ends in .png (plasma.png: plasma-0001.png, ...), or one YUV4MPEG2 file when it ends in .y4m, and to standard output when it is -'
complete -c vorlund -n '__vorlund_command_is play' -F
complete -c vorlund -n '__vorlund_command_is play' -l device -x -d 'One that \'vorlund devices\' lists; null, or file:OUT.wav (default: the system\'s)'
complete -c vorlund -n '__vorlund_command_is play' -l loop -d 'Play the list without end, or with --loop=COUNT so often'
complete -c vorlund -n '__vorlund_command_is play' -l from -x -d 'Begin the first file at this time, like 90 or 1:30'
complete -c vorlund -n '__vorlund_command_is play' -l volume -x -d 'Factor for every sample, 0 to 16 (default 1)'
complete -c vorlund -n '__vorlund_command_is play' -l latency -x -d 'Seconds that the device may keep, 0.001 to 10 (default: its own)'
complete -c vorlund -n '__vorlund_command_is play' -l window -d 'Show live pictures in a window (needs the plug-ins visual and window-output)'
complete -c vorlund -n '__vorlund_command_is play' -l picture -x -a 'both oscilloscope spectrum' -d 'What the window shows (default both)'
complete -c vorlund -n '__vorlund_command_is plugins' -l json -d 'Print JSON for scripts instead of a table'
complete -c vorlund -n '__vorlund_command_is random' -l seed -x -d 'Where the generator begins, 0 to 4294967295 (default 0)'
complete -c vorlund -n '__vorlund_command_is random' -l repeat -x -d 'How many bytes in a row share a value, 1 to 65536 (default 1)'
complete -c vorlund -n '__vorlund_command_is random' -s o -l output -r -F -d 'Write the bytes to this file, as a WAV file of 8 bits when its name ends in .wav; - for standard output, which is the default'
complete -c vorlund -n '__vorlund_command_is record' -s o -l output -r -F -d 'File to write, in place of what is there; - for standard output'
complete -c vorlund -n '__vorlund_command_is record' -l device -x -d 'One that \'vorlund devices\' lists, or null (default: the system\'s)'
complete -c vorlund -n '__vorlund_command_is record' -l duration -x -d 'End after this time, like 90 or 1:30 (default: at Ctrl-C)'
complete -c vorlund -n '__vorlund_command_is record' -l rate -x -d 'Frames per second (default: as the device)'
complete -c vorlund -n '__vorlund_command_is record' -l channels -x -d '1 to 8 (default: as the device, at most 2)'
complete -c vorlund -n '__vorlund_command_is record' -l bits -x -a '8 16 24 32 float' -d 'Bits of a sample: 8, 16, 24, 32 or float (default 16)'
complete -c vorlund -n '__vorlund_command_is record' -l loopback -d 'Record what an output plays'
complete -c vorlund -n '__vorlund_command_is record' -l latency -x -d 'Seconds that the device may keep, 0.001 to 10 (default: its own)'
complete -c vorlund -n '__vorlund_command_is repair' -F
complete -c vorlund -n '__vorlund_command_is repair' -l dry-run -d 'Only tell what is wrong; the exit code is 1 when something is'
complete -c vorlund -n '__vorlund_command_is tag' -F
complete -c vorlund -n '__vorlund_command_is tag' -l set -x -d 'Set a text of INFO (INAM=Title, IART=Artist) or of bext (description=...); may be given several times'
complete -c vorlund -n '__vorlund_command_is tag' -l remove -x -d 'Remove a text of INFO, or all of INFO, bext or cue; may be given several times'
complete -c vorlund -n '__vorlund_command_is window' -F
complete -c vorlund -n '__vorlund_command_is window' -l size -x -d 'Width and height in pixels (default 640x480)'
complete -c vorlund -n '__vorlund_command_is window' -l frames -x -d 'End after this many frames; 0 for until the window is closed or the video ends'
