// Python references held by managed objects that died on a runtime thread, dropped later from Python.
using System;
using System.Collections.Concurrent;
using System.Runtime.CompilerServices;
using System.Threading;

namespace Orvane.WrpGen.Interop
{
    /// <summary>
    /// Finalizers run on a runtime thread that holds no interpreter lock, so they must not touch Python:
    /// they queue the reference here, and the next entry called from Python drops it.
    /// </summary>
    public static class PendingReleases
    {
        private static readonly ConcurrentQueue<IntPtr> s_queue = new ConcurrentQueue<IntPtr>();
        private static int s_count;

        /// <summary>Safe from any thread.</summary>
        public static void Enqueue(IntPtr pyObject)
        {
            if (pyObject == IntPtr.Zero) return;
            s_queue.Enqueue(pyObject);
            Interlocked.Increment(ref s_count);
        }

        /// <summary>Only on a thread that came from Python (inside an entry). One load when nothing waits.</summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static void DrainIfAny()
        {
            if (Volatile.Read(ref s_count) != 0) Drain();
        }

        [MethodImpl(MethodImplOptions.NoInlining)]
        internal static void Drain()
        {
            while (s_queue.TryDequeue(out IntPtr obj))
            {
                Interlocked.Decrement(ref s_count);
                NativeCallbacks.DecRef(obj);
            }
        }
    }
}
