// Test entries that hand out managed collections, enumerables and disposables as handles, so that the collection
// protocol types can be tried on every path, and report what managed code saw.
using System;
using System.Collections;
using System.Collections.Generic;
using System.Runtime.InteropServices;
using Orvane.WrpGen.Interop;

namespace Orvane.PyFigura.Probe
{
    public static unsafe class CollectionProbe
    {
        // A new handle of the managed object named by `kind`; 0 with an exception set.
        [UnmanagedCallersOnly]
        public static IntPtr Make(StringArg* kind) =>
            DrawingProbe.Reported(() => InstanceHandles.Alloc(Build(kind->ToManaged())));

        // What a logging object recorded, as a Python str.
        [UnmanagedCallersOnly]
        public static IntPtr Log(IntPtr handle) =>
            DrawingProbe.Reported(() => NativeCallbacks.PyString(((ILogged)InstanceHandles.Get(handle)).Log));

        private static object Build(string kind) => kind switch
        {
            "objects" => new List<object>(),
            "ints" => new List<int> { 3, 1, 2 },
            "arraylist" => new ArrayList(),
            "logged" => new LoggedList(),
            "fixed" => new object[] { "a", "b", "c" },
            "with-null" => new List<object> { "a", null, "b" },
            "unbound-item" => new List<object> { "a", new object() },
            "bag" => new Bag(),
            "set" => new HashSet<int> { 1, 2, 3 },
            "failing" => new Failing(),
            "claims-fewer" => new Lying(3, 2),
            "claims-more" => new Lying(3, 4),
            "enumerator" => new List<object> { 1, 2 }.GetEnumerator(),
            "disposable" => new Disposable(false),
            "disposable-failing" => new Disposable(true),
            _ => throw new ArgumentException("no probe collection " + kind),
        };

        private interface ILogged
        {
            string Log { get; }
        }

        // A list that records the indexes of its removals.
        private sealed class LoggedList : CollectionBase, ILogged
        {
            private readonly List<string> _log = new List<string>();
            public string Log => string.Join(";", _log);
            protected override void OnRemove(int index, object value) => _log.Add("remove " + index);
        }

        private sealed class Bag : CollectionBase { }

        // Yields 1, then fails.
        private sealed class Failing : IEnumerable
        {
            public IEnumerator GetEnumerator()
            {
                yield return 1;
                throw new InvalidOperationException("the walk broke");
            }
        }

        // Yields `actual` elements 0, 1, ... but tells a count of `claimed`.
        private sealed class Lying : ICollection
        {
            private readonly int _actual, _claimed;
            public Lying(int actual, int claimed) => (_actual, _claimed) = (actual, claimed);
            public int Count => _claimed;
            public bool IsSynchronized => false;
            public object SyncRoot => this;
            public void CopyTo(Array array, int index) => throw new NotSupportedException();
            public IEnumerator GetEnumerator()
            {
                for (int i = 0; i < _actual; i++) yield return i;
            }
        }

        private sealed class Disposable : IDisposable, ILogged
        {
            private readonly bool _fails;
            private int _disposed;
            public Disposable(bool fails) => _fails = fails;
            public string Log => "disposed " + _disposed;
            public void Dispose()
            {
                _disposed++;
                if (_fails) throw new ObjectDisposedException("probe", "the dispose broke");
            }
        }
    }
}
