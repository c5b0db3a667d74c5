// The client of msvc/client.c in C#.
using System;
using System.Runtime.InteropServices;
using System.Text;

static class Client {
    const string Library = "vorlund-c";
    const int Frames = 100;
    const int Size = 44 + 2 * Frames;

    // StdCall counts on 32-bit Windows; elsewhere there is one convention.
    [UnmanagedFunctionPointer(CallingConvention.StdCall)]
    delegate int ReadCallback(IntPtr user, IntPtr buffer, uint size, out uint count);
    [UnmanagedFunctionPointer(CallingConvention.StdCall)]
    delegate int SeekCallback(IntPtr user, ref long position);
    [UnmanagedFunctionPointer(CallingConvention.StdCall)]
    delegate int LengthCallback(IntPtr user, out long length);
    [UnmanagedFunctionPointer(CallingConvention.StdCall)]
    delegate void ReleaseCallback(IntPtr user);

    [StructLayout(LayoutKind.Sequential)]
    struct StreamCallbacks {
        public uint size, reserved;
        public ReadCallback read;
        public SeekCallback seek;
        public LengthCallback length;
        public ReleaseCallback release;
    }
    [StructLayout(LayoutKind.Sequential)]
    struct AudioFormat {
        public uint size, sampleFormat, channels, rate;
    }
    [StructLayout(LayoutKind.Sequential)]
    struct Error {
        public uint size;
        public int code, exceptionType, line;
        public uint systemCode;
        public int callbackCode;
        public IntPtr type, method, file, reason, cause, reserved;
    }

    [DllImport(Library)] static extern int vorlund_version(IntPtr library, out int cInterface);
    [DllImport(Library)] static extern int vorlund_open(uint flags);
    [DllImport(Library)] static extern int vorlund_close();
    [DllImport(Library)] static extern int vorlund_release(IntPtr handle);
    [DllImport(Library)] static extern int vorlund_handle_count(out uint count);
    [DllImport(Library)] static extern int vorlund_last_error(ref Error error);
    [DllImport(Library)] static extern int vorlund_error_text(int field, byte[] text, uint room, out uint length);
    [DllImport(Library, CharSet = CharSet.Unicode)]
    static extern int vorlund_error_text16(int field, StringBuilder text, uint room, out uint length);
    [DllImport(Library)]
    static extern int vorlund_stream_create(ref StreamCallbacks callbacks, IntPtr user, IntPtr format, out IntPtr stream);
    [DllImport(Library)]
    static extern int vorlund_decode_stream(IntPtr source, IntPtr wanted, IntPtr options, IntPtr report,
                                            out IntPtr stream);
    [DllImport(Library, CharSet = CharSet.Unicode)]
    static extern int vorlund_decode_file16(string path, IntPtr wanted, IntPtr options, IntPtr report,
                                            out IntPtr stream);
    [DllImport(Library)] static extern int vorlund_stream_audio_format(IntPtr stream, ref AudioFormat format);
    [DllImport(Library)] static extern int vorlund_stream_length(IntPtr stream, out long length);
    [DllImport(Library)] static extern int vorlund_stream_seek(IntPtr stream, long position);
    [DllImport(Library)] static extern int vorlund_stream_tell(IntPtr stream, out long position);
    [DllImport(Library)] static extern int vorlund_stream_seek_frame_ptr(IntPtr stream, ref ulong frame);
    [DllImport(Library)] static extern int vorlund_stream_tell_frame(IntPtr stream, out ulong frame);
    [DllImport(Library)] static extern int vorlund_stream_read(IntPtr stream, byte[] buffer, uint size, out uint count);
    [DllImport(Library)]
    static extern int vorlund_stream_read_int16(IntPtr stream, short[] samples, uint frames, out uint count);

    static readonly byte[] wav = MakeWav();
    static long position;
    static int code, released, failures;

    static void Put(byte[] bytes, int at, int value, int count) {
        for (int i = 0; i < count; ++i) bytes[at + i] = (byte)(value >> (8 * i));
    }

    static byte[] MakeWav() {
        var bytes = new byte[Size];
        Encoding.ASCII.GetBytes("RIFF....WAVEfmt ....................data....").CopyTo(bytes, 0);
        Put(bytes, 4, Size - 8, 4);
        Put(bytes, 16, 16, 4);
        Put(bytes, 20, 1, 2);
        Put(bytes, 22, 1, 2);
        Put(bytes, 24, 8000, 4);
        Put(bytes, 28, 16000, 4);
        Put(bytes, 32, 2, 2);
        Put(bytes, 34, 16, 2);
        Put(bytes, 40, 2 * Frames, 4);
        for (int i = 0; i < Frames; ++i) Put(bytes, 44 + 2 * i, 3 * i, 2);
        return bytes;
    }

    static int OnRead(IntPtr user, IntPtr buffer, uint size, out uint count) {
        count = 0;
        if (code != 0) return code;
        count = (uint)Math.Min(size, Size - position);
        Marshal.Copy(wav, (int)position, buffer, (int)count);
        position += count;
        return 0;
    }
    static int OnSeek(IntPtr user, ref long place) {
        position = place;
        return 0;
    }
    static int OnLength(IntPtr user, out long length) {
        length = Size;
        return 0;
    }
    static void OnRelease(IntPtr user) {
        ++released;
    }

    static void Check(int result, int wanted) {
        if (result == wanted) return;
        ++failures;
        Console.Write("result {0} {1}\n", result, wanted);
    }

    static int Main() {
        int version;
        Check(vorlund_version(IntPtr.Zero, out version), 0);
        Console.Write("version {0} 0\n", version);
        Check(vorlund_open(2), 0);

        // The collector must not take the delegates while the library has them.
        var callbacks = new StreamCallbacks {
            size = (uint)Marshal.SizeOf(typeof(StreamCallbacks)),
            read = OnRead, seek = OnSeek, length = OnLength, release = OnRelease
        };
        IntPtr stream, decoded;
        Check(vorlund_stream_create(ref callbacks, IntPtr.Zero, IntPtr.Zero, out stream), 0);
        Check(vorlund_decode_stream(stream, IntPtr.Zero, IntPtr.Zero, IntPtr.Zero, out decoded), 0);
        var format = new AudioFormat { size = (uint)Marshal.SizeOf(typeof(AudioFormat)) };
        Check(vorlund_stream_audio_format(decoded, ref format), 0);
        Console.Write("format {0} {1}\n", format.channels, format.rate);
        long bytes, place;
        Check(vorlund_stream_length(decoded, out bytes), 0);
        Check(vorlund_stream_seek(decoded, 100), 0);
        Check(vorlund_stream_tell(decoded, out place), 0);
        Console.Write("length {0} {1}\n", bytes, place);
        var samples = new short[5];
        uint count;
        Check(vorlund_stream_read_int16(decoded, samples, 5, out count), 0);
        Console.Write("samples {0} {1}\n", count, samples[4]);
        ulong frame = 7;
        Check(vorlund_stream_seek_frame_ptr(decoded, ref frame), 0);
        Check(vorlund_stream_read_int16(decoded, samples, 1, out count), 0);
        Check(vorlund_stream_tell_frame(decoded, out frame), 0);
        Console.Write("frame {0} {1}\n", frame, samples[0]);

        code = 42;
        Check(vorlund_stream_read(stream, new byte[2], 2, out count), 12);
        var error = new Error { size = (uint)Marshal.SizeOf(typeof(Error)) };
        Check(vorlund_last_error(ref error), 0);
        Console.Write("error {0} {1}\n", error.code, error.callbackCode);
        Check(vorlund_release(decoded), 0);
        Check(vorlund_release(stream), 0);
        Check(vorlund_release(stream), 101);
        Console.Write("released {0} 0\n", released);
        GC.KeepAlive(callbacks);

        Check(vorlund_decode_file16("there is none.wav", IntPtr.Zero, IntPtr.Zero, IntPtr.Zero, out decoded), 4);
        var text = new byte[200];
        var text16 = new StringBuilder(200);
        uint length, length16;
        Check(vorlund_error_text(0, text, 200, out length), 0);
        Check(vorlund_error_text16(0, text16, 200, out length16), 0);
        Console.Write("{0} {1} {2}\n", Encoding.UTF8.GetString(text, 0, (int)length), length, text16.Length);
        Check(vorlund_close(), 0);
        Check(vorlund_handle_count(out count), 0);
        Console.Write("handles {0} {1}\n", count, failures);
        return failures;
    }
}
