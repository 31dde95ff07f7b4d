// SiApiDisposable: the one entry behind _IDisposableWrapper; disposal itself goes through ObjectHost.Dispose.
using System;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Orvane.WrpGen.Interop
{
    public static class SiApiDisposable
    {
        [UnmanagedCallersOnly]
        [MethodImpl(MethodImplOptions.AggressiveOptimization)]
        public static byte IsAssignableTo(IntPtr handle)
        {
            return InstanceHandles.Get(handle) is IDisposable ? (byte)1 : (byte)0;
        }
    }
}
