// Native memory behind managed images, made visible to the managed collector.
using System;
using System.Drawing;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;
using System.Threading;

namespace Orvane.WrpGen.Interop
{
    /// <summary>
    /// An image's pixels live in libgdiplus, out of the collector's sight: a loop that drops thousands of
    /// bitmaps without disposing them would otherwise grow by gigabytes before a collection comes. Each
    /// image reports its pixel memory as pressure for as long as it lives, or until it is disposed.
    /// </summary>
    public static class NativeMemoryPressure
    {
        private static readonly ConditionalWeakTable<Image, Token> s_tokens = new ConditionalWeakTable<Image, Token>();

        // Smaller images are left to the collector's own pace: reporting them would cost more than the
        // memory they hold, and a loop of them makes managed garbage fast enough to be collected.
        private const long SmallestReported = 256 * 1024;

        /// <summary>Called when a wrapper is made for an image; reported once per image.</summary>
        [MethodImpl(MethodImplOptions.NoInlining)]
        public static void Track(Image image)
        {
            long pixels;
            try
            {
                SizeF size = image.PhysicalDimension;  // one native call
                pixels = (long)size.Width * (long)size.Height;
            }
            catch (Exception)
            {
                return;  // a disposed or broken image holds nothing worth reporting
            }
            Track(image, pixels);
        }

        /// <summary>The same for an image whose pixel count the caller knows (a new Bitmap of a given size).</summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static void Track(Image image, long pixels)
        {
            // Four bytes a pixel is close enough for the collector's arithmetic.
            if (pixels * 4 >= SmallestReported) Report(image, pixels * 4);
        }

        [MethodImpl(MethodImplOptions.NoInlining)]
        private static void Report(Image image, long bytes)
        {
            if (s_tokens.TryGetValue(image, out _)) return;
            var token = new Token(bytes);
            if (!s_tokens.TryAdd(image, token)) token.Release();
        }

        /// <summary>The image was disposed: its memory is back now, not when it is collected.</summary>
        public static void Untrack(object value)
        {
            if (value is Image image && s_tokens.TryGetValue(image, out Token token))
            {
                s_tokens.Remove(image);
                token.Release();
            }
        }

        /// <summary>
        /// A full managed collection, for Python's gc.collect(). Finalizers only queue their Python
        /// references, so waiting for them is safe under the interpreter lock; the queue is dropped here.
        /// </summary>
        [UnmanagedCallersOnly]
        public static void Collect()
        {
            try
            {
                GC.Collect();
                GC.WaitForPendingFinalizers();
                GC.Collect();
                PendingReleases.DrainIfAny();
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        /// <summary>Bytes reported and not yet given back, for the tests and the benchmarks.</summary>
        public static long Reported => Interlocked.Read(ref s_reported);
        private static long s_reported;

        private sealed class Token
        {
            private long _bytes;

            public Token(long bytes)
            {
                _bytes = bytes;
                GC.AddMemoryPressure(bytes);
                Interlocked.Add(ref s_reported, bytes);
            }

            ~Token() => Release();

            public void Release()
            {
                long bytes = Interlocked.Exchange(ref _bytes, 0);
                if (bytes == 0) return;
                GC.RemoveMemoryPressure(bytes);
                Interlocked.Add(ref s_reported, -bytes);
                GC.SuppressFinalize(this);
            }
        }
    }
}
