// A managed Stream over a Python file object: each operation is one call through the streams callbacks.
using System;
using System.IO;
using System.Threading;

namespace Orvane.WrpGen.Interop
{
    /// <summary>
    /// Reads, writes and seeks a Python file (an io.RawIOBase, io.BufferedIOBase or BufferStream) for
    /// managed code, on the thread of the Python call that lent the file, which holds the interpreter lock.
    ///
    /// The file is borrowed for that call: the caller keeps it alive, and System.Drawing reads or writes
    /// all it needs within the call and keeps no stream. So a script's file is released (and, for a
    /// temporary <c>open(...)</c>, closed and flushed) as soon as the call returns. A consumer that keeps
    /// the stream past the call must call <see cref="Retain"/>: the stream then holds a reference until it
    /// is disposed, or finalized, when the release is queued and dropped by the next call from Python.
    ///
    /// A failing Python method: where the stream is called from managed code, the Python exception is
    /// taken with its traceback and thrown as a <see cref="PythonException"/>, which the entry reports as
    /// the proxy RuntimeError. Where System.Drawing calls it from libgdiplus' stream callbacks, no managed
    /// exception may unwind through those native frames (the process would end): there the Python
    /// exception is left pending, the stream stops calling Python and answers as an empty stream, and
    /// the wrapper's check after the call raises the script's own exception.
    /// </summary>
    public sealed unsafe class PyFileStream : Stream
    {
        private const int GroupStreams = CallbackRows.GroupStreams;
        private const int RowWrite = CallbackRows.Streams.Write;
        private const int RowWriteByte = CallbackRows.Streams.WriteByte;
        private const int RowRead = CallbackRows.Streams.Read;
        private const int RowReadByte = CallbackRows.Streams.ReadByte;
        private const int RowSeek = CallbackRows.Streams.Seek;
        private const int RowFlush = CallbackRows.Streams.Flush;
        private const int RowClose = CallbackRows.Streams.Close;
        private const int RowCanRead = CallbackRows.Streams.CanRead;
        private const int RowCanWrite = CallbackRows.Streams.CanWrite;
        private const int RowCanSeek = CallbackRows.Streams.CanSeek;
        private const int RowTell = CallbackRows.Streams.Tell;
        private const int RowLength = CallbackRows.Streams.Length;

        private const int Failed = -1;
        private const long NotSeekable = -2;
        private const long Closed = -3;

        private IntPtr _file;
        private bool _retained;
        private readonly int _thread;
        private readonly bool _canRead;
        private readonly bool _canWrite;
        private readonly bool _canSeek;
        private bool _faulted;

        /// <summary>Wraps a file object that the caller lends; a closed file is refused.</summary>
        public PyFileStream(IntPtr file)
        {
            _thread = Environment.CurrentManagedThreadId;
            _canRead = Ask(file, RowCanRead);
            _canWrite = Ask(file, RowCanWrite);
            _canSeek = Ask(file, RowCanSeek);
            if (!_canRead && !_canWrite && !_canSeek)
            {
                // A closed file answers no to all three; so does a file that can do nothing.
                long length = ((delegate* unmanaged<IntPtr, long>)Row(RowLength))(file);
                if (length == Closed) throw new ObjectDisposedException(null, "Cannot access a closed file.");
                if (length == Failed) throw PythonException.CatchAndClear();
            }
            _file = file;
        }

        /// <summary>Takes a reference to the file, for a stream that outlives the call that lent it.</summary>
        public void Retain()
        {
            IntPtr file = File();
            if (_retained) return;
            ((delegate* unmanaged<IntPtr, void>)((IntPtr*)NativeCallbacks.StaticGroups[NativeCallbacks.GroupReferences])[CallbackRows.References.Add])(file);
            _retained = true;
        }

        ~PyFileStream()
        {
            Dispose(false);
        }

        public override bool CanRead => _canRead && _file != IntPtr.Zero;
        public override bool CanWrite => _canWrite && _file != IntPtr.Zero;
        public override bool CanSeek => _canSeek && _file != IntPtr.Zero;

        public override long Length
        {
            get
            {
                IntPtr file = File();
                if (_faulted) return 0;
                long length = ((delegate* unmanaged<IntPtr, long>)Row(RowLength))(file);
                switch (length)
                {
                    case Failed:
                        Fail();
                        return 0;
                    case NotSeekable:
                        throw new NotSupportedException("the Python file is not seekable");
                    case Closed:
                        throw new ObjectDisposedException(null, "Cannot access a closed file.");
                    default:
                        return length;
                }
            }
        }

        public override long Position
        {
            get
            {
                IntPtr file = File();
                if (_faulted) return Failed;
                long position = ((delegate* unmanaged<IntPtr, long>)Row(RowTell))(file);
                if (position == Failed) Fail();
                return position;
            }
            set => Seek(value, SeekOrigin.Begin);
        }

        public override long Seek(long offset, SeekOrigin origin)
        {
            IntPtr file = File();
            if (_faulted) return Failed;
            long position = ((delegate* unmanaged<IntPtr, long, int, long>)Row(RowSeek))(file, offset, (int)origin);
            if (position == Failed) Fail();
            return position;
        }

        public override void SetLength(long value)
        {
            throw new NotSupportedException("a Python file can't be resized through a managed stream");
        }

        public override void Flush()
        {
            IntPtr file = File();
            if (_faulted) return;
            if (((delegate* unmanaged<IntPtr, int>)Row(RowFlush))(file) == Failed) Fail();
        }

        public override int Read(byte[] buffer, int offset, int count)
        {
            ValidateBufferArguments(buffer, offset, count);
            return Read(new Span<byte>(buffer, offset, count));
        }

        /// <summary>One readinto call: a short count is not completed, 0 is the end.</summary>
        public override int Read(Span<byte> buffer)
        {
            IntPtr file = File();
            if (_faulted) return 0;
            int got;
            fixed (byte* data = buffer) got = ((delegate* unmanaged<IntPtr, byte*, int, int>)Row(RowRead))(file, data, buffer.Length);
            if (got >= 0 && got <= buffer.Length) return got;
            if (got == Failed) Fail();
            else Refuse("the Python file reported reading " + got + " bytes into a buffer of " + buffer.Length);
            return 0;
        }

        public override int ReadByte()
        {
            IntPtr file = File();
            if (_faulted) return -1;
            int value = ((delegate* unmanaged<IntPtr, int>)Row(RowReadByte))(file);
            if (value != -2) return value;
            Fail();
            return -1;
        }

        public override void Write(byte[] buffer, int offset, int count)
        {
            ValidateBufferArguments(buffer, offset, count);
            Write(new ReadOnlySpan<byte>(buffer, offset, count));
        }

        /// <summary>Calls write until every byte is taken: raw files may take fewer than given.</summary>
        public override void Write(ReadOnlySpan<byte> buffer)
        {
            IntPtr file = File();
            if (_faulted) return;
            var write = (delegate* unmanaged<IntPtr, byte*, int, int>)Row(RowWrite);
            fixed (byte* data = buffer)
            {
                int done = 0;
                while (done < buffer.Length)
                {
                    int left = buffer.Length - done;
                    int written = write(file, data + done, left);
                    if (written > 0 && written <= left)
                    {
                        done += written;
                        continue;
                    }
                    if (written == Failed) Fail();
                    else Refuse("the Python file reported writing " + written + " of " + left + " bytes");
                    return;
                }
            }
        }

        public override void WriteByte(byte value)
        {
            IntPtr file = File();
            if (_faulted) return;
            int written = ((delegate* unmanaged<IntPtr, byte, int>)Row(RowWriteByte))(file, value);
            if (written == 1) return;
            if (written == Failed) Fail();
            else Refuse("the Python file reported writing " + written + " of 1 byte");
        }

        /// <summary>
        /// Disposing on the Python thread closes the file (a pending exception survives, a failing
        /// close is reported as unraisable) and drops a retained reference; the finalizer never touches
        /// Python: it only queues the release of a retained reference.
        /// </summary>
        protected override void Dispose(bool disposing)
        {
            IntPtr file = Interlocked.Exchange(ref _file, IntPtr.Zero);
            if (file != IntPtr.Zero)
            {
                if (disposing && Environment.CurrentManagedThreadId == _thread)
                {
                    ((delegate* unmanaged<IntPtr, void>)Row(RowClose))(file);
                    if (_retained) NativeCallbacks.DecRef(file);
                }
                else if (_retained)
                {
                    PendingReleases.Enqueue(file);
                }
            }
            base.Dispose(disposing);
        }

        private static IntPtr Row(int number) => ((IntPtr*)NativeCallbacks.StaticGroups[GroupStreams])[number];

        private static bool Ask(IntPtr file, int row)
        {
            int answer = ((delegate* unmanaged<IntPtr, int>)Row(row))(file);
            if (answer == Failed) throw PythonException.CatchAndClear();
            return answer != 0;
        }

        /// <summary>The file, when the stream is open and used on the thread that lent it.</summary>
        private IntPtr File()
        {
            IntPtr file = _file;
            if (file == IntPtr.Zero) throw new ObjectDisposedException(nameof(PyFileStream));
            if (Environment.CurrentManagedThreadId != _thread)
                throw new InvalidOperationException("a Python file can only be used on the thread of the Python call that passed it");
            return file;
        }

        /// <summary>A row failed and left its Python exception pending.</summary>
        private void Fail()
        {
            if (UnderNativeCallback())
            {
                _faulted = true;
                StreamCalls.MarkFaulted();
                return;
            }
            throw PythonException.CatchAndClear();
        }

        /// <summary>The file answered what a stream can't accept; no Python exception is pending.</summary>
        private void Refuse(string message)
        {
            var error = new IOException(message);
            if (!UnderNativeCallback()) throw error;
            ProxyErrors.Report(error);
            _faulted = true;
            StreamCalls.MarkFaulted();
        }

        /// <summary>
        /// True while an entry that handed a stream to System.Drawing runs on this thread: libgdiplus may
        /// be calling back, and an exception must not cross into it.
        /// </summary>
        private static bool UnderNativeCallback() => StreamCalls.Active;
    }
}
