// SPDX-License-Identifier: MIT
// follow in C#: what follow.cpp does. Compiled by the tests of the library, not yet run on Windows.
// One line builds it here:
//
//   mcs -platform:x64 follow.cs ../csharp/kora4_interop.cs -out:follow_cs.exe
using System;
using System.Runtime.InteropServices;
using Velto.KORA4;

// The library calls it on threads of its own. Every method returns S_OK: a failing result, that of an
// exception too, ends all notifications.
class Follower : IVeltoKORA4APICallback
{
    public int OnActiveProfileChange(int profileID)
    {
        Console.WriteLine("profile {0}", profileID);
        return 0;
    }
    public int OnEnableStateChange(bool onElseOff) { return 0; }
    public int OnCustomProfileTableChange() { return 0; }
    public int OnTechnologyOnElseOffChange(KORA4APITechnology technology, bool onElseOff) { return 0; }
    public int OnSimplePatchValueChange(ref KORA4PatchValueUnion pPatchValue) { return 0; }
    public int OnGraphicEQChange(ref GraphicEQData pGraphicData) { return 0; }
}

static class Program
{
    // An object may be used in the multithreaded apartment by all threads, the finalizer's included.
    [MTAThread]
    static int Main()
    {
        try
        {
            var api = (IVeltoKORA4API)new VeltoKORA4APITestCoclass();
            int profile;
            Marshal.ThrowExceptionForHR(api.Initialize());
            Marshal.ThrowExceptionForHR(api.RegisterChangeNotifications(new Follower()));
            Marshal.ThrowExceptionForHR(api.GetActiveProfile(out profile));
            Console.WriteLine("profile {0}", profile);
            Console.Read();
            api.UnregisterChangeNotifications();
            Marshal.FinalReleaseComObject(api);
            return 0;
        }
        catch (COMException problem)
        {
            Console.Error.WriteLine("follow_cs: 0x{0:X8}", problem.ErrorCode);
            return 1;
        }
    }
}
