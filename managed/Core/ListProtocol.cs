// SiApiCntList and SiApiCollectionBase: bounds checks and mutations of a managed IList for the native list
// protocol, with the index rules of Python's list where the native side leaves them to managed code.
using System;
using System.Collections;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Entries of _IListWrapper, in its binding order. Statuses: 0 done, 2 out of range, -1 failed.</summary>
    public static unsafe class SiApiCntList
    {
        private const int Done = 0;
        private const int Empty = 1;
        private const int OutOfRange = 2;
        private const int Failed = -1;

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqGetItem(IntPtr self, int index, IntPtr* result)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList list = ListOf(self);
                if ((uint)index >= (uint)list.Count) return OutOfRange;
                return CollectionItems.Store(list[index], result);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return Failed;
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
                IList list = ListOf(self);
                if ((uint)index >= (uint)list.Count) return OutOfRange;
                list[index] = CollectionItems.Read(value, list);
                return Done;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return Failed;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void SqSetItemNoCheck(IntPtr self, int index, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList list = ListOf(self);
                list[index] = CollectionItems.Read(value, list);
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
                IList list = ListOf(self);
                list.Add(CollectionItems.Read(value, list));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        /// <summary>Inserts as list.insert does: a negative index counts from the end, and both ends clamp.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Insert(IntPtr self, int index, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList list = ListOf(self);
                int count = list.Count;
                if (index < 0) index = Math.Max(0, index + count);
                list.Insert(Math.Min(index, count), CollectionItems.Read(value, list));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        /// <summary>Removes the first equal element: 1 if there was one.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int Remove(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList list = ListOf(self);
                int at = CollectionItems.IndexOf(list, CollectionItems.Read(value, list));
                if (at < 0) return 0;
                list.RemoveAt(at);
                return 1;
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
                IList list = ListOf(self);
                if ((uint)index >= (uint)list.Count) return OutOfRange;
                list.RemoveAt(index);
                return Done;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return Failed;
            }
        }

        /// <summary>
        /// Pops as list.pop does: without an argument the last element, else the one at <paramref name="index"/>,
        /// negative from the end. The element is made before it is removed, so a failed conversion loses nothing.
        /// </summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int Pop(IntPtr self, int argc, int index, IntPtr* result)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList list = ListOf(self);
                int count = list.Count;
                if (count == 0) return Empty;
                int at = argc == 0 ? count - 1 : index < 0 ? index + count : index;
                if ((uint)at >= (uint)count) return OutOfRange;
                if (CollectionItems.Store(list[at], result) != Done) return Failed;
                list.RemoveAt(at);
                return Done;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return Failed;
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

        /// <summary>Appends every element of another managed collection (itself included): 1 if it was one.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqInplaceConcat(IntPtr self, InstanceArg* other)
        {
            try
            {
                PendingReleases.DrainIfAny();
                if (!(InstanceHandles.Get(other->Handle) is IEnumerable items) || items is string) return 0;
                IList list = ListOf(self);
                Type element = CollectionItems.ElementType(list);
                foreach (object item in CollectionItems.Snapshot(items)) list.Add(CollectionItems.Fit(item, element));
                return 1;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        /// <summary>The list repeated in place; a count below 1 empties it.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void SqInplaceRepeat(IntPtr self, int count)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList list = ListOf(self);
                if (count < 1)
                {
                    list.Clear();
                    return;
                }
                List<object> once = CollectionItems.Snapshot(list);
                for (int k = 1; k < count; k++)
                    foreach (object item in once) list.Add(item);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        /// <summary>Writes the elements of another managed collection of exactly <paramref name="count"/> elements at
        /// start, start + step, ...: 1 if it was one.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int MpSetItems(IntPtr self, InstanceArg* other, int start, int count, int step)
        {
            try
            {
                PendingReleases.DrainIfAny();
                if (!(InstanceHandles.Get(other->Handle) is ICollection items) || items.Count != count) return 0;
                IList list = ListOf(self);
                Type element = CollectionItems.ElementType(list);
                List<object> values = CollectionItems.Snapshot(items);
                for (int k = 0; k < count; k++) list[start + k * step] = CollectionItems.Fit(values[k], element);
                return 1;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return 0;
            }
        }

        /// <summary>Removes <paramref name="count"/> elements at start, start + step, ...; the native side walks downward.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void MpRemoveItems(IntPtr self, int start, int count, int step)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList list = ListOf(self);
                for (int k = 0; k < count; k++) list.RemoveAt(start + k * step);
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
                IList list = ListOf(self);
                for (int i = 0, j = list.Count - 1; i < j; i++, j--)
                {
                    object swap = list[i];
                    list[i] = list[j];
                    list[j] = swap;
                }
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        /// <summary>A stable sort, ascending or descending, numbers by value across their types.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Sort(IntPtr self, int reverse)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList list = ListOf(self);
                List<object> items = CollectionItems.Snapshot(list);
                IEnumerable<object> sorted = reverse != 0
                    ? items.OrderByDescending(x => x, CollectionItems.Order)
                    : items.OrderBy(x => x, CollectionItems.Order);
                int i = 0;
                foreach (object item in sorted.ToList()) list[i++] = item;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        /// <summary>Position of the first equal element in [start, stop), both read as list.index reads them; -1 if none.</summary>
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int IndexBy(IntPtr self, int hasStart, int start, int hasStop, int stop, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList list = ListOf(self);
                object probe = CollectionItems.Read(value, list);
                int count = list.Count;
                int from = hasStart != 0 ? Bound(start, count) : 0;
                int to = hasStop != 0 ? Bound(stop, count) : count;
                for (int i = from; i < to && i < list.Count; i++)
                    if (CollectionItems.Matches(list[i], probe)) return i;
                return -1;
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
                IList list = ListOf(self);
                return CollectionItems.IndexOf(list, CollectionItems.Read(value, list)) >= 0 ? 1 : 0;
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
                IList list = ListOf(self);
                return CollectionItems.CountOf(list, CollectionItems.Read(value, list));
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

        private static int Bound(int index, int count)
        {
            if (index < 0) index = Math.Max(0, index + count);
            return Math.Min(index, count);
        }
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
