// A Python exception that reached managed code through a callback, carried as its formatted text.
using System;

namespace Orvane.WrpGen.Interop
{
    public sealed class PythonException : Exception
    {
        public PythonException(string text) : base(text) { }

        /// <summary>
        /// Takes the pending Python exception (clearing it) and returns a managed exception with its
        /// traceback text, to be thrown where a callback reported failure.
        /// </summary>
        public static unsafe PythonException CatchAndClear()
        {
            IntPtr text = IntPtr.Zero;
            StringArg view = new StringArg { Length = -1 };
            string message = "a Python callback failed and its exception could not be formatted";
            if (NativeCallbacks.CatchAndClearError != null && NativeCallbacks.CatchAndClearError(&text, &view) == 0)
            {
                message = view.ToManaged();
                NativeCallbacks.DecRef(text);
            }
            return new PythonException(message);
        }
    }
}
