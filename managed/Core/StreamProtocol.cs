// SiApiStream: the primitive operations of a managed stream, for the native _StreamWrapper.
using System;
using System.IO;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>
    /// Entries of _StreamWrapper, in its binding order. Sizing, line finding and the closed flag are
    /// native; each entry here is one call on the stream behind the handle.
    /// </summary>
    public static unsafe class SiApiStream
    {
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte CanRead(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return StreamOf(self).CanRead ? (byte)1 : (byte)0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte CanSeek(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return StreamOf(self).CanSeek ? (byte)1 : (byte)0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte CanWrite(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return StreamOf(self).CanWrite ? (byte)1 : (byte)0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static long Length(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return StreamOf(self).Length;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static long Position(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return StreamOf(self).Position;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Close(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                StreamOf(self).Close();
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Flush(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                StreamOf(self).Flush();
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        /// <summary>One read of at most <paramref name="count"/> bytes; 0 at the end.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int Read(IntPtr self, byte* buffer, int count)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return StreamOf(self).Read(new Span<byte>(buffer, count));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static long Seek(IntPtr self, long offset, int whence)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return StreamOf(self).Seek(offset, (SeekOrigin)whence);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        /// <summary>Cuts or extends the stream to <paramref name="size"/>, or to the position when
        /// <paramref name="usePosition"/> is not 0; returns the new size.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static long SetLength(IntPtr self, int usePosition, long size)
        {
            try
            {
                PendingReleases.DrainIfAny();
                Stream stream = StreamOf(self);
                if (usePosition != 0) size = stream.Position;
                stream.SetLength(size);
                return size;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Write(IntPtr self, byte* buffer, int count)
        {
            try
            {
                PendingReleases.DrainIfAny();
                StreamOf(self).Write(new ReadOnlySpan<byte>(buffer, count));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsAssignableTo(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return InstanceHandles.Get(self) is Stream ? (byte)1 : (byte)0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        private static Stream StreamOf(IntPtr self)
        {
            return InstanceHandles.Get(self) as Stream
                ?? throw new InvalidOperationException("the wrapper holds no managed stream");
        }
    }
}
