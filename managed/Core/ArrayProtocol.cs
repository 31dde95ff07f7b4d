// SiApiArray and SiApiArrayList: the untyped array and array-list tables behind _ArrayWrapper and _ArrListWrapper.
using System;
using System.Collections;
using System.Linq;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Entries of _ArrayWrapper over any managed array, in binding order: fixed length, elements as objects.</summary>
    public static unsafe class SiApiArray
    {
        private const int Done = 0;
        private const int Empty = 1;
        private const int OutOfRange = 2;
        private const int Failed = -1;

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqLength(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ArrayOf(self).Count;
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
                IList a = ArrayOf(self);
                return CollectionItems.IndexOf(a, CollectionItems.Read(value, a)) >= 0 ? 1 : 0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqGetItem(IntPtr self, int index, IntPtr* result)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList a = ArrayOf(self);
                if ((uint)index >= (uint)a.Count) return OutOfRange;
                return CollectionItems.Store(a[index], result);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return Failed;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr SqGetItemNoCheck(IntPtr self, int index)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ObjectResults.From(ArrayOf(self)[index]);
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
                IList a = ArrayOf(self);
                if ((uint)index >= (uint)a.Count) return OutOfRange;
                a[index] = CollectionItems.Read(value, a);
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
        public static void SqSetItemNoChek(IntPtr self, int index, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList a = ArrayOf(self);
                a[index] = CollectionItems.Read(value, a);
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
                return ListOps.SetItems(ArrayOf(self), InstanceHandles.Get(other->Handle), start, count, step);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return Failed;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Reverse(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ListOps.Reverse(ArrayOf(self));
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
                ListOps.Sort(ArrayOf(self), reverse != 0);
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
                return ListOps.IndexBy(ArrayOf(self), hasStart != 0, start, hasStop != 0, stop, value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int CountOf(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                IList a = ArrayOf(self);
                return CollectionItems.CountOf(a, CollectionItems.Read(value, a));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr CreateInstanceFromPyList(VariantArg* value)
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

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr CreateInstanceFromPySequence(VariantArg* value)
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

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsAssignableTo(IntPtr handle)
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

        private static IList ArrayOf(IntPtr self) => (Array)InstanceHandles.Get(self);
    }

    /// <summary>Entries of _ArrListWrapper over an ArrayList, in binding order.</summary>
    public static unsafe class SiApiArrayList
    {
        private const int Done = 0;
        private const int Empty = 1;
        private const int OutOfRange = 2;
        private const int Failed = -1;

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqLength(IntPtr self)
        {
            try
            {
                PendingReleases.DrainIfAny();
                return ListOf(self).Count;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static void Add(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ArrayList l = ListOf(self);
                l.Add(CollectionItems.Read(value, l));
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
                ArrayList l = ListOf(self);
                int at = CollectionItems.IndexOf(l, CollectionItems.Read(value, l));
                if (at < 0) return 0;
                l.RemoveAt(at);
                return 1;
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

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqContains(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ArrayList l = ListOf(self);
                return CollectionItems.IndexOf(l, CollectionItems.Read(value, l)) >= 0 ? 1 : 0;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqGetItem(IntPtr self, int index, IntPtr* result)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ArrayList l = ListOf(self);
                if ((uint)index >= (uint)l.Count) return OutOfRange;
                return CollectionItems.Store(l[index], result);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return Failed;
            }
        }

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
                ArrayList l = ListOf(self);
                if ((uint)index >= (uint)l.Count) return OutOfRange;
                l[index] = CollectionItems.Read(value, l);
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
        public static void SqSetItemNoChek(IntPtr self, int index, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ArrayList l = ListOf(self);
                l[index] = CollectionItems.Read(value, l);
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
                ArrayList l = ListOf(self);
                int count = l.Count;
                if (index < 0) index = Math.Max(0, index + count);
                l.Insert(Math.Min(index, count), CollectionItems.Read(value, l));
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int RemoveAt(IntPtr self, int index)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ArrayList l = ListOf(self);
                if ((uint)index >= (uint)l.Count) return OutOfRange;
                l.RemoveAt(index);
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
        public static int Pop(IntPtr self, int argc, int index, IntPtr* result)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ArrayList l = ListOf(self);
                int count = l.Count;
                if (count == 0) return Empty;
                int at = argc == 0 ? count - 1 : index < 0 ? index + count : index;
                if ((uint)at >= (uint)count) return OutOfRange;
                int status = CollectionItems.Store(l[at], result);
                if (status == Done) l.RemoveAt(at);
                return status;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return Failed;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int SqInplaceConcat(IntPtr self, InstanceArg* other)
        {
            try
            {
                PendingReleases.DrainIfAny();
                if (!(InstanceHandles.Get(other->Handle) is IEnumerable items) || items is string) return 0;
                ListOf(self).AddRange(CollectionItems.Snapshot(items));
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
        public static void SqInplaceRepeat(IntPtr self, int count)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ArrayList l = ListOf(self);
                if (count < 1) { l.Clear(); return; }
                var once = CollectionItems.Snapshot(l);
                for (int k = 1; k < count; k++) l.AddRange(once);
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
                return ListOps.SetItems(ListOf(self), InstanceHandles.Get(other->Handle), start, count, step);
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
                ArrayList l = ListOf(self);
                for (int k = 0; k < count; k++) l.RemoveAt(start + k * step);
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
                ListOf(self).Reverse();
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
                ListOps.Sort(ListOf(self), reverse != 0);
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
                return ListOps.IndexBy(ListOf(self), hasStart != 0, start, hasStop != 0, stop, value);
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return -1;
            }
        }

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static int CountOf(IntPtr self, VariantArg* value)
        {
            try
            {
                PendingReleases.DrainIfAny();
                ArrayList l = ListOf(self);
                return CollectionItems.CountOf(l, CollectionItems.Read(value, l));
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
        public static IntPtr CreateInstanceFromPyList(VariantArg* value)
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

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static IntPtr CreateInstanceFromPySequence(VariantArg* value)
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

        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsAssignableTo(IntPtr handle)
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

        private static ArrayList ListOf(IntPtr self) => (ArrayList)InstanceHandles.Get(self);
    }

    /// <summary>Steps both untyped tables share.</summary>
    internal static unsafe class ListOps
    {
        /// <summary>Writes another managed collection of exactly <paramref name="count"/> elements at start, start + step, ...: 1 if it was one.</summary>
        public static int SetItems(IList list, object other, int start, int count, int step)
        {
            if (!(other is ICollection items) || items.Count != count) return 0;
            Type element = CollectionItems.ElementType(list);
            var values = CollectionItems.Snapshot(items);  // the source may be the list itself
            for (int k = 0; k < count; k++) list[start + k * step] = CollectionItems.Fit(values[k], element);
            return 1;
        }

        public static void Reverse(IList list)
        {
            for (int i = 0, j = list.Count - 1; i < j; i++, j--) (list[i], list[j]) = (list[j], list[i]);
        }

        /// <summary>A stable sort, numbers by value across their types.</summary>
        public static void Sort(IList list, bool reverse)
        {
            var items = CollectionItems.Snapshot(list);
            var sorted = (reverse ? items.OrderByDescending(x => x, CollectionItems.Order)
                                  : items.OrderBy(x => x, CollectionItems.Order)).ToList();
            for (int i = 0; i < sorted.Count; i++) list[i] = sorted[i];
        }

        /// <summary>Position of the first equal element in [start, stop), read as list.index reads them; -1 if none.</summary>
        public static int IndexBy(IList list, bool hasStart, int start, bool hasStop, int stop, VariantArg* value)
        {
            object probe = CollectionItems.Read(value, list);
            int count = list.Count;
            int from = hasStart ? Bound(start, count) : 0;
            int to = hasStop ? Bound(stop, count) : count;
            for (int i = from; i < to; i++)
                if (CollectionItems.Matches(list[i], probe)) return i;
            return -1;
        }

        private static int Bound(int index, int count)
        {
            if (index < 0) index = Math.Max(0, index + count);
            return Math.Min(index, count);
        }
    }
}
