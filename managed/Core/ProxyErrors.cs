// Reports a managed exception to Python: RuntimeError "Proxy error(<type>): <message>".
using System;

namespace Orvane.WrpGen.Interop
{
    public static unsafe class ProxyErrors
    {
        /// <summary>Called from the catch block of every entry; never throws.</summary>
        public static void Report(Exception exception)
        {
            try
            {
                // After a file failed under System.Drawing, its error is set already and says more than
                // System.Drawing's own failure that followed.
                if (NativeCallbacks.RaiseProxyError == null || exception is PythonErrorPending || StreamCalls.Faulted) return;
                IntPtr type = NativeCallbacks.PyStringQuiet(exception.GetType().FullName);
                IntPtr message = NativeCallbacks.PyStringQuiet(exception.Message);
                NativeCallbacks.RaiseProxyError(type, message);
            }
            catch
            {
                // Nothing may leave an entry; a failure to report leaves no Python exception either.
            }
        }
    }
}
