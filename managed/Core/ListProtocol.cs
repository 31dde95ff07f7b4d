// SiApiCntList and SiApiCollectionBase: the native list protocol over any managed IList, through ListOperations.
using System;
using System.Collections;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Entries of _IListWrapper, in its binding order. Statuses: 0 done, 2 out of range, -1 failed.</summary>
    public unsafe class SiApiCntList
    {
        protected SiApiCntList() { }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqGetItem(IntPtr self, int index, IntPtr* result)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOperations.GetItem(ListOf(self), index, result);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return ListStatus.Failed;
            }
        }

        /// <summary>A new reference to the element at a position the caller knows to be valid; null on failure.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr SqGetItemNoCheck(IntPtr self, int index)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ObjectResults.From(ListOf(self)[index]);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqSetItem(IntPtr self, int index, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOperations.SetItem(ListOf(self), index, value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return ListStatus.Failed;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void SqSetItemNoCheck(IntPtr self, int index, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOperations.SetItemNoCheck(ListOf(self), index, value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Add(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOperations.Add(ListOf(self), value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Insert(IntPtr self, int index, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOperations.Insert(ListOf(self), index, value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int Remove(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOperations.Remove(ListOf(self), value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int RemoveAt(IntPtr self, int index)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOperations.RemoveAt(ListOf(self), index);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return ListStatus.Failed;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int Pop(IntPtr self, int argc, int index, IntPtr* result)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOperations.Pop(ListOf(self), argc, index, result);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return ListStatus.Failed;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Clear(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOf(self).Clear();
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqInplaceConcat(IntPtr self, InstanceArg* other)
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
        public static void SqInplaceRepeat(IntPtr self, int count)
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
        public static int MpSetItems(IntPtr self, InstanceArg* other, int start, int count, int step)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOperations.SetItems(ListOf(self), InstanceHandles.Get(other->Handle), start, count, step);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void MpRemoveItems(IntPtr self, int start, int count, int step)
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
        public static void Reverse(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOperations.Reverse(ListOf(self));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Sort(IntPtr self, int reverse)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOperations.Sort(ListOf(self), reverse != 0);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int IndexBy(IntPtr self, int hasStart, int start, int hasStop, int stop, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                // A comparison may shorten the list, and list.index stops there too.
                return ListOperations.IndexBy(ListOf(self), hasStart != 0, start, hasStop != 0, stop, value, remeasure: true);
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
                return CollectionItems.Contains(ListOf(self), value) ? 1 : 0;
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
                return CollectionItems.CountOf(ListOf(self), value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr CreateInstanceFromPyList(VariantArg* value) => SiApiCntCollection.NewList(value);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr CreateInstanceFromPySequence(VariantArg* value) => SiApiCntCollection.NewList(value);

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsAssignableTo(IntPtr handle)
        {
            return InstanceHandles.Get(handle) is IList ? (byte)1 : (byte)0;
        }

        private static IList ListOf(IntPtr self) => (IList)InstanceHandles.Get(self);
    }

    /// <summary>
    /// The table of _ColBaseWrapper, which runs on SiApiCntList: it is bound so that the type can't be made
    /// when the managed base is missing.
    /// </summary>
    public static unsafe class SiApiCollectionBase
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
            return InstanceHandles.Get(handle) is CollectionBase ? (byte)1 : (byte)0;
        }

        private static IntPtr NewItems(VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                var items = new ItemsCollection();
                foreach (object item in CollectionItems.ItemsOf(value)) items.Add(item);
                return InstanceHandles.Alloc(items);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }
    }

    /// <summary>A collection base of any elements.</summary>
    public sealed class ItemsCollection : CollectionBase
    {
        public int Add(object item) => List.Add(item);

        public object this[int index]
        {
            get => List[index];
            set => List[index] = value;
        }
    }
}
