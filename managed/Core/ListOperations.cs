// The list operations behind the array, array-list and IList tables, with the index rules of Python's list.
using System;
using System.Collections;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.CompilerServices;

namespace Orvane.WrpGen.Interop
{
    /// <summary>Bodies of the list entries; each entry keeps its own error handling and failure result.</summary>
    internal static unsafe class ListOperations
    {
        // Single-element steps are inlined so that each entry compiles as if it held the body itself.

        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static int GetItem(IList list, int index, IntPtr* result)
        {
            if ((uint)index >= (uint)list.Count) return ListStatus.OutOfRange;
            return CollectionItems.Store(list[index], result);
        }

        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static int SetItem(IList list, int index, VariantArg* value)
        {
            if ((uint)index >= (uint)list.Count) return ListStatus.OutOfRange;
            list[index] = CollectionItems.Read(value, list);
            return ListStatus.Done;
        }

        /// <summary>Writes at a position the caller knows to be valid.</summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static void SetItemNoCheck(IList list, int index, VariantArg* value)
        {
            list[index] = CollectionItems.Read(value, list);
        }

        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static void Add(IList list, VariantArg* value)
        {
            list.Add(CollectionItems.Read(value, list));
        }

        /// <summary>Inserts as list.insert does: a negative index counts from the end, and both ends clamp.</summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static void Insert(IList list, int index, VariantArg* value)
        {
            list.Insert(Bound(index, list.Count), CollectionItems.Read(value, list));
        }

        /// <summary>Removes the first equal element: 1 if there was one.</summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static int Remove(IList list, VariantArg* value)
        {
            int at = CollectionItems.IndexOf(list, CollectionItems.Read(value, list));
            if (at < 0) return 0;
            list.RemoveAt(at);
            return 1;
        }

        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static int RemoveAt(IList list, int index)
        {
            if ((uint)index >= (uint)list.Count) return ListStatus.OutOfRange;
            list.RemoveAt(index);
            return ListStatus.Done;
        }

        /// <summary>
        /// Pops as list.pop does: without an argument the last element, else the one at <paramref name="index"/>,
        /// negative from the end. The element is made before it is removed, so a failed conversion loses nothing.
        /// </summary>
        [MethodImpl(MethodImplOptions.AggressiveInlining)]
        public static int Pop(IList list, int argc, int index, IntPtr* result)
        {
            int count = list.Count;
            if (count == 0) return ListStatus.Empty;
            int at = argc == 0 ? count - 1 : index < 0 ? index + count : index;
            if ((uint)at >= (uint)count) return ListStatus.OutOfRange;
            if (CollectionItems.Store(list[at], result) != ListStatus.Done) return ListStatus.Failed;
            list.RemoveAt(at);
            return ListStatus.Done;
        }

        /// <summary>Appends every element of another managed collection (the list itself included): 1 if it was one.</summary>
        public static int Extend(IList list, object other)
        {
            List<object> items = Appendable(other);
            if (items == null) return 0;
            Type element = CollectionItems.ElementType(list);
            foreach (object item in items) list.Add(CollectionItems.Fit(item, element));
            return 1;
        }

        /// <summary>The list repeated in place; a count below 1 empties it.</summary>
        public static void Repeat(IList list, int count)
        {
            if (count < 1)
            {
                list.Clear();
                return;
            }
            List<object> once = CollectionItems.Snapshot(list);
            for (int k = 1; k < count; k++)
                foreach (object item in once) list.Add(item);
        }

        /// <summary>Writes another managed collection of exactly <paramref name="count"/> elements at start, start + step, ...: 1 if it was one.</summary>
        public static int SetItems(IList list, object other, int start, int count, int step)
        {
            if (!(other is ICollection items) || items.Count != count) return 0;
            Type element = CollectionItems.ElementType(list);
            List<object> values = CollectionItems.Snapshot(items);  // the source may be the list itself
            for (int k = 0; k < count; k++) list[start + k * step] = CollectionItems.Fit(values[k], element);
            return 1;
        }

        /// <summary>Removes <paramref name="count"/> elements at start, start + step, ...; the native side walks downward.</summary>
        public static void RemoveItems(IList list, int start, int count, int step)
        {
            for (int k = 0; k < count; k++) list.RemoveAt(start + k * step);
        }

        public static void Reverse(IList list)
        {
            for (int i = 0, j = list.Count - 1; i < j; i++, j--) (list[i], list[j]) = (list[j], list[i]);
        }

        /// <summary>A stable sort, ascending or descending, numbers by value across their types.</summary>
        public static void Sort(IList list, bool reverse)
        {
            List<object> items = CollectionItems.Snapshot(list);
            List<object> sorted = (reverse ? items.OrderByDescending(x => x, CollectionItems.Order)
                                           : items.OrderBy(x => x, CollectionItems.Order)).ToList();
            for (int i = 0; i < sorted.Count; i++) list[i] = sorted[i];
        }

        /// <summary>
        /// Position of the first equal element in [start, stop), both read as list.index reads them; -1 if none.
        /// With <paramref name="remeasure"/> the walk also stops where a comparison has shortened the list.
        /// </summary>
        public static int IndexBy(IList list, bool hasStart, int start, bool hasStop, int stop, VariantArg* value, bool remeasure)
        {
            object probe = CollectionItems.Read(value, list);
            int count = list.Count;
            int from = hasStart ? Bound(start, count) : 0;
            int to = hasStop ? Bound(stop, count) : count;
            for (int i = from; i < to && (!remeasure || i < list.Count); i++)
                if (CollectionItems.Matches(list[i], probe)) return i;
            return -1;
        }

        // An ArrayList takes any element as it is: it grows by block copies, and its own calls cost no
        // interface dispatch per element. Its entries pick these overloads by their static type.

        public static int Extend(ArrayList list, object other)
        {
            List<object> items = Appendable(other);
            if (items == null) return 0;
            list.AddRange(items);
            return 1;
        }

        public static void Repeat(ArrayList list, int count)
        {
            if (count < 1)
            {
                list.Clear();
                return;
            }
            List<object> once = CollectionItems.Snapshot(list);
            for (int k = 1; k < count; k++) list.AddRange(once);
        }

        public static void RemoveItems(ArrayList list, int start, int count, int step)
        {
            for (int k = 0; k < count; k++) list.RemoveAt(start + k * step);
        }

        /// <summary>A copy of the elements of another managed collection, strings excepted; null if it is none.</summary>
        private static List<object> Appendable(object other)
        {
            return other is IEnumerable items && !(items is string) ? CollectionItems.Snapshot(items) : null;
        }

        /// <summary>An index as list.insert and list.index read one: negative from the end, clamped to [0, count].</summary>
        private static int Bound(int index, int count)
        {
            if (index < 0) index = Math.Max(0, index + count);
            return Math.Min(index, count);
        }
    }
}
