// The object entries every wrapper uses: text, hash, equality and disposal of the object behind a handle.
using System;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    public static unsafe class ObjectHost
    {
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int ToStringOfObj(IntPtr handle, IntPtr* text) => ToStringOf(handle, text);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int ToStringOfStc(IntPtr handle, IntPtr* text) => ToStringOf(handle, text);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int GetHashOfObj(IntPtr handle) => HashOf(handle);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int GetHashOfStc(IntPtr handle) => HashOf(handle);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsEqualsOfObj(IntPtr left, IntPtr right) => EqualsOf(left, right);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsEqualsOfStc(IntPtr left, IntPtr right) => EqualsOf(left, right);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Dispose(IntPtr handle)
        {
            try
            {
                PendingReleases.DrainIfAny();
                object target = InstanceHandles.Get(handle);
                (target as IDisposable)?.Dispose();
                NativeMemoryPressure.Untrack(target);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        private static int ToStringOf(IntPtr handle, IntPtr* text)
        {
            try
            {
                string value = InstanceHandles.Get(handle)?.ToString();
                if (value == null) return 0;
                *text = NativeCallbacks.PyString(value);
                return *text != IntPtr.Zero ? 1 : 0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        private static int HashOf(IntPtr handle)
        {
            try
            {
                return InstanceHandles.Get(handle)?.GetHashCode() ?? 0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        private static byte EqualsOf(IntPtr left, IntPtr right)
        {
            try
            {
                object a = InstanceHandles.Get(left);
                object b = InstanceHandles.Get(right);
                return (byte)(a == null ? (b == null ? 1 : 0) : (a.Equals(b) ? 1 : 0));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }
    }
}
