// SPDX-License-Identifier: MIT
// Prints the shape of the C# declarations: interfaces, methods with their numbers of parameters, records.
using System;
using System.Linq;
using System.Runtime.InteropServices;
using Velto.KORA4;

static class InteropCheck
{
    static void Main()
    {
        foreach (var type in new[] { typeof(IVeltoKORA4APICallback), typeof(IVeltoKORA4API) })
        {
            Console.WriteLine("{0} {1}", type.Name, type.GUID);
            // In the order of the slots.
            foreach (var method in type.GetMethods().OrderBy(m => m.MetadataToken))
                Console.WriteLine("  {0} {1}", method.Name, method.GetParameters().Length);
        }
        Console.WriteLine("KORA4PatchValueUnion {0}", Marshal.SizeOf(typeof(KORA4PatchValueUnion)));
        Console.WriteLine("GraphicEQData {0} {1}", Marshal.SizeOf(typeof(GraphicEQData)),
            Marshal.OffsetOf(typeof(GraphicEQData), "m_gain"));
    }
}
