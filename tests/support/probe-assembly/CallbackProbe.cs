// Test entry that drives the callback rows of the containers, lists, sequences, iteration and generic
// tables from managed code, the way the collection protocols use them.
using System;
using System.Collections.Generic;
using System.Reflection;
using System.Runtime.InteropServices;
using Orvane.WrpGen.Interop;

namespace Orvane.PyFigura.Probe
{
    public static unsafe class CallbackProbe
    {
        private const int GroupBuffers = 2;
        private const int GroupReferences = 3;
        private const int GroupIteration = 4;
        private const int GroupContainers = 5;
        private const int GroupLists = 6;
        private const int GroupSequences = 7;

        /// <summary>
        /// Runs the row named by <paramref name="op"/> on <paramref name="target"/> (borrowed) with <paramref name="item"/>
        /// (borrowed; given a reference of its own where the row steals it) and <paramref name="index"/>. The row's result
        /// goes to <paramref name="status"/>; the return value is a new reference or null. A row that fails leaves its
        /// Python exception pending, unless the op is prefixed "caught:", which turns it into a managed exception.
        /// </summary>
        [UnmanagedCallersOnly]
        public static IntPtr Row(StringArg* op, IntPtr target, IntPtr item, int index, long* status)
        {
            try
            {
                string name = op->ToManaged();
                bool caught = name.StartsWith("caught:", StringComparison.Ordinal);
                if (caught) name = name.Substring("caught:".Length);
                IntPtr result = Dispatch(name, target, item, index, status);
                if (caught && (*status < 0 || *status == 2) && name != "index" && name != "seq_index")
                    throw PythonException.CatchAndClear();
                return result;
            }
            catch (Exception e)
            {
                ProxyErrors.Report(e);
                return IntPtr.Zero;
            }
        }

        [UnmanagedCallersOnly]
        public static long LiveHandles() => InstanceHandles.Live;

        /// <summary>How many wire records the runtime lays out otherwise than api/records.json says.</summary>
        [UnmanagedCallersOnly]
        public static int WireLayoutMismatches() => WireLayout.Mismatches().Length;

        private static IntPtr Dispatch(string name, IntPtr target, IntPtr item, int index, long* status)
        {
            *status = 0;
            switch (name)
            {
                case "list_size": *status = Call<long>(GroupContainers, 0, target); return IntPtr.Zero;
                case "list_size64": *status = Call<long>(GroupContainers, 1, target); return IntPtr.Zero;
                case "pop": *status = ((delegate* unmanaged<IntPtr, int, int>)Slot(GroupContainers, 2))(target, index); return IntPtr.Zero;
                case "clear": *status = Call<int>(GroupContainers, 3, target); return IntPtr.Zero;
                case "seq_size": *status = Call<long>(GroupContainers, 4, target); return IntPtr.Zero;
                case "seq_size64": *status = Call<long>(GroupContainers, 5, target); return IntPtr.Zero;
                case "size": *status = Call<long>(GroupContainers, 7, target); return IntPtr.Zero;
                case "iter":
                    IntPtr iterator = Call<IntPtr>(GroupContainers, 6, target);
                    *status = iterator == IntPtr.Zero ? -1 : 0;
                    return iterator;
                case "iterate": return Iterate(target, status);
                case "char": return ReadChar(target, status);
                case "new_list": return NewList(index, false);
                case "new_list64": return NewList(index, true);
                case "get":
                    return ReadVariantRow(((delegate* unmanaged<IntPtr, int, VariantArg*, int>)Slot(GroupLists, 0)), target, index, status, false);
                case "set": *status = Steal<int>(GroupLists, 1, target, index, item); return IntPtr.Zero;
                case "append": *status = ((delegate* unmanaged<IntPtr, IntPtr, long>)Slot(GroupLists, 2))(target, Own(item)); return IntPtr.Zero;
                case "insert": *status = Steal<int>(GroupLists, 3, target, index, item); return IntPtr.Zero;
                case "remove": *status = Steal<int>(GroupLists, 4, target, item); return IntPtr.Zero;
                case "contains": *status = Steal<int>(GroupLists, 5, target, item); return IntPtr.Zero;
                case "index": *status = Steal<int>(GroupLists, 6, target, item); return IntPtr.Zero;
                case "wrap_ilist": return Call<IntPtr>(GroupLists, 8, InstanceHandles.Alloc(new List<int> { 1, 2 }));
                case "wrap_arrlist": return Call<IntPtr>(GroupLists, 9, InstanceHandles.Alloc(new System.Collections.ArrayList { 1 }));
                case "wrap_array": return Call<IntPtr>(GroupLists, 10, InstanceHandles.Alloc(new[] { 1, 2, 3 }));
                case "seq_get":
                    return ReadVariantRow(((delegate* unmanaged<IntPtr, int, VariantArg*, int>)Slot(GroupSequences, 0)), target, index, status, true);
                case "seq_contains": *status = Steal<int>(GroupSequences, 1, target, item); return IntPtr.Zero;
                case "seq_contains_null": *status = ((delegate* unmanaged<IntPtr, IntPtr, int>)Slot(GroupSequences, 1))(target, IntPtr.Zero); return IntPtr.Zero;
                case "seq_index": *status = Steal<int>(GroupSequences, 2, target, item); return IntPtr.Zero;
                default:
                    if (name.StartsWith("generic:", StringComparison.Ordinal))
                        return GenericElements.Read(int.Parse(name.Substring("generic:".Length)), target, index, status);
                    throw new ArgumentException("no row named " + name);
            }
        }

        /// <summary>The whole iteration through containers 6 and the iteration row; the items as a new list.</summary>
        private static IntPtr Iterate(IntPtr iterable, long* status)
        {
            IntPtr iterator = Call<IntPtr>(GroupContainers, 6, iterable);
            if (iterator == IntPtr.Zero) { *status = -1; return IntPtr.Zero; }
            var next = (delegate* unmanaged<IntPtr, IntPtr*, VariantArg*, int>)Slot(GroupIteration, 0);
            var items = new List<IntPtr>();
            int code;
            while (true)
            {
                IntPtr word = IntPtr.Zero;
                VariantArg variant = default;
                code = next(iterator, &word, &variant);
                if (code != 0) break;
                items.Add(word);
            }
            NativeCallbacks.DecRef(iterator);
            *status = code;
            IntPtr list = BuildList(items);  // the list takes over the item references
            if (code == 2) { NativeCallbacks.DecRef(list); return IntPtr.Zero; }
            return list;
        }

        /// <summary>Containers 10: the code-unit count of a one-character str.</summary>
        private static IntPtr ReadChar(IntPtr str, long* status)
        {
            IntPtr keep = IntPtr.Zero;
            int length = -1;
            IntPtr data = IntPtr.Zero;
            *status = ((delegate* unmanaged<IntPtr, IntPtr*, int*, IntPtr*, int>)Slot(GroupContainers, 10))(str, &keep, &length, &data);
            NativeCallbacks.DecRef(keep);
            return *status == 1 ? ObjectResults.From(length) : IntPtr.Zero;
        }

        /// <summary>A list of `count` made by containers 8 or 9, filled with 0, 10, 20, ... through lists 7.</summary>
        private static IntPtr NewList(int count, bool wide)
        {
            IntPtr list = IntPtr.Zero;
            IntPtr* items = wide
                ? ((delegate* unmanaged<long, IntPtr*, IntPtr*>)Slot(GroupContainers, 9))(count, &list)
                : ((delegate* unmanaged<int, IntPtr*, IntPtr*>)Slot(GroupContainers, 8))(count, &list);
            if (list == IntPtr.Zero) return IntPtr.Zero;
            var store = (delegate* unmanaged<IntPtr*, int, IntPtr, int>)Slot(GroupLists, 7);
            for (int i = 0; i < count; i++)
            {
                if (store(items, i, ObjectResults.From(i * 10)) != i) throw new InvalidOperationException("lists 7 gave another index");
            }
            return list;
        }

        /// <summary>Lists 0 or sequences 0: [variant code, the value read by the managed side and made again].</summary>
        private static IntPtr ReadVariantRow(delegate* unmanaged<IntPtr, int, VariantArg*, int> row, IntPtr target, int index,
                                             long* status, bool owned)
        {
            VariantArg variant = default;
            *status = row(target, index, &variant);
            if (*status != 0) return IntPtr.Zero;
            try
            {
                object value = WireArgs.ReadVariant(&variant);
                bool described = value is System.Collections.IList and not byte[] || value is System.Drawing.CharacterRange;
                IntPtr made = described ? NativeCallbacks.PyString(Describe(value)) : ObjectResults.From(value);
                return BuildList(new List<IntPtr> { ObjectResults.From(variant.Code), made });
            }
            finally
            {
                if (owned && variant.Code != 1 && variant.Code != 2) NativeCallbacks.DecRef(variant.Value);
            }
        }

        /// <summary>Managed type names and values of a collection read from Python: "List`1[Int32 1, String a]".</summary>
        private static string Describe(object value)
        {
            if (value is System.Collections.IList list and not byte[])
            {
                var parts = new List<string>();
                foreach (object element in list) parts.Add(Describe(element));
                return value.GetType().Name + "[" + string.Join(", ", parts) + "]";
            }
            return value == null ? "null" : value.GetType().Name + " " + Convert.ToString(value, System.Globalization.CultureInfo.InvariantCulture);
        }

        /// <summary>A new list that steals the references given.</summary>
        internal static IntPtr BuildList(List<IntPtr> items)
        {
            IntPtr list = IntPtr.Zero;
            IntPtr* slots = ((delegate* unmanaged<int, IntPtr*, IntPtr*>)Slot(GroupContainers, 8))(items.Count, &list);
            if (list == IntPtr.Zero) throw PythonException.CatchAndClear();
            var store = (delegate* unmanaged<IntPtr*, int, IntPtr, int>)Slot(GroupLists, 7);
            for (int i = 0; i < items.Count; i++) store(slots, i, items[i]);
            return list;
        }

        /// <summary>A reference of the row's own for a borrowed item that the row steals.</summary>
        private static IntPtr Own(IntPtr item)
        {
            ((delegate* unmanaged<IntPtr, void>)Slot(GroupReferences, 0))(item);
            return item;
        }

        private static T Call<T>(int group, int number, IntPtr argument) where T : unmanaged
        {
            return ((delegate* unmanaged<IntPtr, T>)Slot(group, number))(argument);
        }

        private static T Steal<T>(int group, int number, IntPtr target, IntPtr item) where T : unmanaged
        {
            return ((delegate* unmanaged<IntPtr, IntPtr, T>)Slot(group, number))(target, Own(item));
        }

        private static T Steal<T>(int group, int number, IntPtr target, int index, IntPtr item) where T : unmanaged
        {
            return ((delegate* unmanaged<IntPtr, int, IntPtr, T>)Slot(group, number))(target, index, Own(item));
        }

        internal static IntPtr Slot(int group, int number) => ((IntPtr*)Groups[group])[number];

        // The tables as the interop assembly keeps them; not part of its public surface.
        private static readonly IntPtr* Groups = (IntPtr*)Pointer.Unbox(
            typeof(NativeCallbacks).GetField("StaticGroups", BindingFlags.NonPublic | BindingFlags.Static).GetValue(null));
        internal static readonly IntPtr* GenericCells = (IntPtr*)Pointer.Unbox(
            typeof(NativeCallbacks).GetField("GenericCells", BindingFlags.NonPublic | BindingFlags.Static).GetValue(null));
    }
}
