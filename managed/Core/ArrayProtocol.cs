// SiApiArray and SiApiArrayList: the untyped array and array-list tables behind _ArrayWrapper and _ArrListWrapper.
using System;
using System.Collections;
using System.Linq;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>The entries that the array and ArrayList tables add to the IList table, alike in both.</summary>
    public unsafe class SiApiIndexedList : SiApiCntList
    {
        protected SiApiIndexedList() { }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqLength(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ItemsOf(self).Count;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new int SqContains(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return CollectionItems.Contains(ItemsOf(self), value) ? 1 : 0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void SqSetItemNoChek(IntPtr self, int index, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOperations.SetItemNoCheck(ItemsOf(self), index, value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        private static IList ItemsOf(IntPtr self) => (IList)InstanceHandles.Get(self);
    }

    /// <summary>Entries of _ArrayWrapper over any managed array: fixed length, elements as objects; the item
    /// entries it shares with any IList are the IList table's, inherited.</summary>
    public sealed unsafe class SiApiArray : SiApiIndexedList
    {
        private SiApiArray() { }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new int MpSetItems(IntPtr self, InstanceArg* other, int start, int count, int step)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOperations.SetItems(ArrayOf(self), InstanceHandles.Get(other->Handle), start, count, step);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return ListStatus.Failed;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new int IndexBy(IntPtr self, int hasStart, int start, int hasStop, int stop, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                // An array keeps its length, so the walk need not measure it again.
                return ListOperations.IndexBy(ArrayOf(self), hasStart != 0, start, hasStop != 0, stop, value, remeasure: false);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new IntPtr CreateInstanceFromPyList(VariantArg* value) => NewArray(value);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new IntPtr CreateInstanceFromPySequence(VariantArg* value) => NewArray(value);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new byte IsAssignableTo(IntPtr handle)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return InstanceHandles.Get(handle) is Array ? (byte)1 : (byte)0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return (byte)0;
            }
        }

        private static IntPtr NewArray(VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return InstanceHandles.Alloc(CollectionItems.ItemsOf(value).ToArray());
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }

        private static IList ArrayOf(IntPtr self) => (Array)InstanceHandles.Get(self);
    }

    /// <summary>Entries of _ArrListWrapper over an ArrayList, in binding order.</summary>
    /// <remarks>The entries that read and write single items are those of the IList table, inherited.</remarks>
    public sealed unsafe class SiApiArrayList : SiApiIndexedList
    {
        private SiApiArrayList() { }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new int Remove(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOperations.Remove(ListOf(self), value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return ListStatus.Failed;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new int SqInplaceConcat(IntPtr self, InstanceArg* other)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOperations.Extend(ListOf(self), InstanceHandles.Get(other->Handle));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new void SqInplaceRepeat(IntPtr self, int count)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOperations.Repeat(ListOf(self), count);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new void MpRemoveItems(IntPtr self, int start, int count, int step)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOperations.RemoveItems(ListOf(self), start, count, step);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new void Reverse(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOf(self).Reverse();
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new int IndexBy(IntPtr self, int hasStart, int start, int hasStop, int stop, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOperations.IndexBy(ListOf(self), hasStart != 0, start, hasStop != 0, stop, value, remeasure: false);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void EnsureCapacity(IntPtr self, int count)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ArrayList l = ListOf(self);
                if (count > 0 && l.Count + count > l.Capacity) l.Capacity = l.Count + count;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new IntPtr CreateInstanceFromPyList(VariantArg* value) => NewArrayList(value);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new IntPtr CreateInstanceFromPySequence(VariantArg* value) => NewArrayList(value);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static new byte IsAssignableTo(IntPtr handle)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return InstanceHandles.Get(handle) is ArrayList ? (byte)1 : (byte)0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return (byte)0;
            }
        }

        private static IntPtr NewArrayList(VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return InstanceHandles.Alloc(new ArrayList(CollectionItems.ItemsOf(value)));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }

        private static ArrayList ListOf(IntPtr self) => (ArrayList)InstanceHandles.Get(self);
    }
}
