// Instance handles: a managed object kept alive behind an opaque word until the wrapper gives it back.
using System;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;
using System.Threading;

namespace Orvane.WrpGen.Interop
{
    public static class InstanceHandles
    {
        /// <summary>A new handle that keeps <paramref name="value"/> alive; 0 for null.</summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static IntPtr Alloc(object value)
        {
            if (value == null) return IntPtr.Zero;
            if (value is System.Drawing.Image image) NativeMemoryPressure.Track(image);
            return Keep(value);
        }

        /// <summary>A new handle for an image made with a known size: no native query for it.</summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static IntPtr AllocImage(System.Drawing.Image image, int width, int height)
        {
            NativeMemoryPressure.Track(image, (long)width * height);
            return Keep(image);
        }

        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        private static IntPtr Keep(object value)
        {
            Interlocked.Increment(ref s_live);
            return GCHandle.ToIntPtr(GCHandle.Alloc(value));
        }

        /// <summary>The object behind a handle; null for 0.</summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static object Get(IntPtr handle)
        {
            return handle == IntPtr.Zero ? null : GCHandle.FromIntPtr(handle).Target;
        }

        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static T Get<T>(IntPtr handle) where T : class
        {
            return handle == IntPtr.Zero ? null : Unsafe.As<T>(GCHandle.FromIntPtr(handle).Target);
        }

        public static void Free(IntPtr handle)
        {
            if (handle == IntPtr.Zero) return;
            GCHandle.FromIntPtr(handle).Free();
            Interlocked.Decrement(ref s_live);
        }

        /// <summary>Stable key of a managed type for the life of the process.</summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static IntPtr TypeKey(object value)
        {
            return value.GetType().TypeHandle.Value;
        }

        /// <summary>Live handles, for leak checks in tests and benchmarks.</summary>
        public static long Live => Interlocked.Read(ref s_live);
        private static long s_live;
    }
}
