// SiApiCntCollection and SiApiReadOnlyCollectionBase: length, membership and counting for the native
// read-only collection protocol.
using System;
using System.Collections;
using System.Collections.Generic;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Entries of _IColWrapper, in its binding order; lists and collection classes use them too.</summary>
    public static unsafe class SiApiCntCollection
    {
        /// <summary>The number of elements; -1 with a Python exception set on failure.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqLength(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return CollectionItems.Count(InstanceHandles.Get(self));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqContains(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return CollectionItems.Contains((IEnumerable)InstanceHandles.Get(self), value) ? 1 : 0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int CountOf(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return CollectionItems.CountOf((IEnumerable)InstanceHandles.Get(self), value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        /// <summary>A managed list of the items of a Python list, as a handle; 0 on failure.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr CreateInstanceFromPyList(VariantArg* value) => NewList(value);

        /// <summary>A managed list of the items of a Python tuple or list, as a handle; 0 on failure.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr CreateInstanceFromPySequence(VariantArg* value) => NewList(value);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsAssignableTo(IntPtr handle)
        {
            return InstanceHandles.Get(handle) is ICollection ? (byte)1 : (byte)0;
        }

        internal static IntPtr NewList(VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return InstanceHandles.Alloc(CollectionItems.ItemsOf(value));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }
    }

    /// <summary>
    /// The table of _RoColBaseWrapper, which runs on SiApiCntCollection: it is bound so that the type can't
    /// be made when the managed base is missing.
    /// </summary>
    public static unsafe class SiApiReadOnlyCollectionBase
    {
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr CreateInstanceFromPyList(VariantArg* value) => NewItems(value);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr CreateInstanceFromPySequence(VariantArg* value) => NewItems(value);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsAssignableTo(IntPtr handle)
        {
            return InstanceHandles.Get(handle) is ReadOnlyCollectionBase ? (byte)1 : (byte)0;
        }

        private static IntPtr NewItems(VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return InstanceHandles.Alloc(new ItemsReadOnlyCollection(CollectionItems.ItemsOf(value)));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }
    }

    /// <summary>A read-only collection base holding the items it was made with.</summary>
    public sealed class ItemsReadOnlyCollection : ReadOnlyCollectionBase
    {
        public ItemsReadOnlyCollection(IEnumerable<object> items)
        {
            foreach (object item in items) InnerList.Add(item);
        }

        public object this[int index] => InnerList[index];
    }
}
