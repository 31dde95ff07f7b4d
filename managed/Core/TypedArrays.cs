// Searches, counts, sorting and slice copies over typed arrays, shared by every SiApiArray_XXXXXXXX class.
using System;
using System.Collections.Generic;

namespace Orvane.WrpGen.Interop
{
    public static class TypedArrays
    {
        /// <summary>Element equality: byte arrays by content, anything else by its own Equals.</summary>
        public static bool Same<T>(T a, T b)
        {
            if (a is byte[] x && b is byte[] y) return x.AsSpan().SequenceEqual(y);
            return EqualityComparer<T>.Default.Equals(a, b);
        }

        /// <summary>list.index over [start, stop): negative bounds count from the end; -1 when absent.</summary>
        public static int IndexOf<T>(T[] array, T value, int start, int stop)
        {
            int n = array.Length;
            if (start < 0) start = Math.Max(0, start + n);
            if (stop < 0) stop = Math.Max(0, stop + n);
            stop = Math.Min(stop, n);
            for (int i = start; i < stop; i++)
                if (Same(array[i], value)) return i;
            return -1;
        }

        public static int Count<T>(T[] array, T value)
        {
            int count = 0;
            foreach (T item in array)
                if (Same(item, value)) count++;
            return count;
        }

        public static void Sort<T>(T[] array, bool reverse)
        {
            Array.Sort(array);
            if (reverse) Array.Reverse(array);
        }

        /// <summary>
        /// Copies another managed array or list of T into the slice (start, count, step) in one step: 1 if
        /// taken whole, 0 if the other object is no such collection of that length (the caller then goes by
        /// element).
        /// </summary>
        public static int SetItems<T>(T[] array, object other, int start, int count, int step)
        {
            if (other is not IList<T> source || source.Count != count) return 0;
            var copy = new T[count];  // the source may be the array itself
            source.CopyTo(copy, 0);
            for (int k = 0; k < count; k++) array[start + k * step] = copy[k];
            return 1;
        }
    }
}
