// SPDX-License-Identifier: MIT
// follow in Rust, without crates: what follow.cpp does. The tables of methods are written down
// here: slots that are not used are only counted. One line builds it here:
//
//   rustc --target x86_64-pc-windows-gnu -O -C strip=symbols follow.rs -o follow_rs.exe
use std::ffi::c_void;
use std::io::Read;
use std::ptr::{null, null_mut};

#[repr(C)]
#[derive(Clone, Copy, PartialEq)]
struct Guid(u32, u16, u16, [u8; 8]);

const CLASS: Guid = Guid(0x16CC6CDB, 0x872A, 0x4099, [0x95, 0xB1, 0x25, 0xBE, 0xBF, 0x71, 0xB0, 0xD9]);
const API: Guid = Guid(0x23F52F2F, 0x4FB0, 0x4DDB, [0x97, 0xDF, 0x15, 0x9C, 0xB7, 0x56, 0xB7, 0x97]);
const CALLBACK: Guid = Guid(0x849BFE92, 0x4CE8, 0x4DA8, [0xAD, 0x50, 0x3C, 0xF6, 0xB9, 0x71, 0x44, 0x94]);
const UNKNOWN: Guid = Guid(0, 0, 0, [0xC0, 0, 0, 0, 0, 0, 0, 0x46]);

const CLSCTX_INPROC_SERVER: u32 = 1;
const E_NOINTERFACE: i32 = 0x80004002u32 as i32;

#[link(name = "ole32")]
extern "system" {
    fn CoInitializeEx(reserved: *const c_void, model: u32) -> i32;
    fn CoUninitialize();
    fn CoCreateInstance(class: *const Guid, outer: *const c_void, context: u32, iid: *const Guid,
                        object: *mut *mut Api) -> i32;
}

// IVeltoKORA4API, as far as slot 7.
#[repr(C)]
struct Api {
    methods: *const ApiMethods,
}
#[repr(C)]
struct ApiMethods {
    query_interface: usize,
    add_ref: usize,
    release: unsafe extern "system" fn(*mut Api) -> u32,
    get_version: usize,
    initialize: unsafe extern "system" fn(*mut Api) -> i32,
    register: unsafe extern "system" fn(*mut Api, *const Callback) -> i32,
    unregister: unsafe extern "system" fn(*mut Api) -> i32,
    get_active_profile: unsafe extern "system" fn(*mut Api, *mut i32) -> i32,
}

// IVeltoKORA4APICallback, whole. All of them succeed: a failing result ends all notifications.
#[repr(C)]
struct Callback {
    methods: &'static CallbackMethods,
}
#[repr(C)]
struct CallbackMethods {
    query_interface: extern "system" fn(*const Callback, *const Guid, *mut *const Callback) -> i32,
    add_ref: extern "system" fn(*const Callback) -> u32,
    release: extern "system" fn(*const Callback) -> u32,
    on_active_profile: extern "system" fn(*const Callback, i32) -> i32,
    on_enable_state: extern "system" fn(*const Callback, i32) -> i32,
    on_custom_profile_table: extern "system" fn(*const Callback) -> i32,
    on_technology: extern "system" fn(*const Callback, i32, i32) -> i32,
    on_simple_patch_value: extern "system" fn(*const Callback, *const c_void) -> i32,
    on_graphic_eq: extern "system" fn(*const Callback, *const c_void) -> i32,
}

extern "system" fn query_interface(this: *const Callback, iid: *const Guid, object: *mut *const Callback) -> i32 {
    let known = unsafe { *iid == UNKNOWN || *iid == CALLBACK };
    unsafe { *object = if known { this } else { null() } };
    if known { 0 } else { E_NOINTERFACE }
}
// The one callback lives as long as the program: references are not counted.
extern "system" fn add_ref(_: *const Callback) -> u32 { 2 }
extern "system" fn release(_: *const Callback) -> u32 { 1 }
extern "system" fn on_active_profile(_: *const Callback, profile: i32) -> i32 { println!("profile {}", profile); 0 }
extern "system" fn on_enable_state(_: *const Callback, _: i32) -> i32 { 0 }
extern "system" fn on_custom_profile_table(_: *const Callback) -> i32 { 0 }
extern "system" fn on_technology(_: *const Callback, _: i32, _: i32) -> i32 { 0 }
extern "system" fn on_record(_: *const Callback, _: *const c_void) -> i32 { 0 }

static METHODS: CallbackMethods = CallbackMethods {
    query_interface,
    add_ref,
    release,
    on_active_profile,
    on_enable_state,
    on_custom_profile_table,
    on_technology,
    on_simple_patch_value: on_record,
    on_graphic_eq: on_record,
};

fn checked(hr: i32) -> Result<(), i32> {
    if hr < 0 { Err(hr) } else { Ok(()) }
}

unsafe fn follow(api: *mut Api, callback: &Callback) -> Result<(), i32> {
    let methods = &*(*api).methods;
    let mut profile = 0;
    checked((methods.initialize)(api))?;
    checked((methods.register)(api, callback))?;
    checked((methods.get_active_profile)(api, &mut profile))?;
    println!("profile {}", profile);
    let _ = std::io::stdin().read(&mut [0]);
    checked((methods.unregister)(api))
}

fn run() -> Result<(), i32> {
    let callback = Callback { methods: &METHODS };
    unsafe {
        checked(CoInitializeEx(null(), 0))?; // the multithreaded apartment
        let mut api = null_mut();
        let mut result = checked(CoCreateInstance(&CLASS, null(), CLSCTX_INPROC_SERVER, &API, &mut api));
        if result.is_ok() {
            result = follow(api, &callback);
            ((*(*api).methods).release)(api);
        }
        CoUninitialize();
        result
    }
}

fn main() {
    if let Err(hr) = run() {
        eprintln!("follow_rs: 0x{:08X}", hr);
        std::process::exit(1);
    }
}
