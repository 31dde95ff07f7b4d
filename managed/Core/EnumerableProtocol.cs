// SiApiEnumerable and SiApiEnumerator: managed enumeration for the native _IterableWrapper and _IterWrapper.
using System;
using System.Collections;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Entries of _IterableWrapper, in its binding order.</summary>
    public static unsafe class SiApiEnumerable
    {
        /// <summary>A new enumerator of the enumerable behind <paramref name="self"/>, as a handle; status 0, or -1.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int GetEnumerator(IntPtr self, IntPtr* result)
        {
            try
            {
                PendingReleases.DrainIfAny();
                *result = InstanceHandles.Alloc(((IEnumerable)InstanceHandles.Get(self)).GetEnumerator());
                return 0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        /// <summary>A managed list of the items of a Python list or tuple, as a handle; 0 on failure.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr CreateInstanceFromPyIterable(VariantArg* value) => SiApiCntCollection.NewList(value);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsAssignableTo(IntPtr handle)
        {
            return InstanceHandles.Get(handle) is IEnumerable ? (byte)1 : (byte)0;
        }
    }

    /// <summary>Entries of _IterWrapper, in its binding order.</summary>
    public static unsafe class SiApiEnumerator
    {
        /// <summary>
        /// Advances the enumerator: 0 with a new reference to the element in <paramref name="item"/>, 1 at the
        /// end, any other value with a Python exception set (a collection modified during the walk, say).
        /// </summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static uint MoveNext(IntPtr self, IntPtr* item)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IEnumerator enumerator = (IEnumerator)InstanceHandles.Get(self);
                if (!enumerator.MoveNext()) return 1;
                return CollectionItems.Store(enumerator.Current, item) == 0 ? 0u : 3u;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 3;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsAssignableTo(IntPtr handle)
        {
            return InstanceHandles.Get(handle) is IEnumerator ? (byte)1 : (byte)0;
        }
    }
}
