//! Calls what setup.rs does not; of client_test.sh.

mod tarn;

use std::ffi::c_void;
use std::ptr::{null, null_mut};

const TITLE: &str = "Client für alle";

#[link(name = "user32")]
extern "system" {
    fn FindWindowW(class: *const u16, title: *const u16) -> *mut c_void;
    fn IsWindowVisible(window: *mut c_void) -> i32;
}

fn visible() -> i32 {
    let title: Vec<u16> = TITLE.encode_utf16().chain(Some(0)).collect();
    unsafe { IsWindowVisible(FindWindowW(null(), title.as_ptr())) }
}

fn main() {
    let folder = std::env::args().nth(1).unwrap();
    tarn::do_wait_dlg_modless(null_mut(), TITLE, "One moment");
    println!("wait window: {}", visible());
    tarn::close_wait_dlg();
    println!("closed: {}", visible());
    let path = tarn::do_file_open_dialog("C:\\", "Client öffnet", "Text files (*.txt)|*.txt||", "txt");
    println!("picked: {} {}", path.is_some(), path.unwrap_or_default());
    println!("queued: {}", tarn::put_in_run_once("TarnClient", "\"C:\\x y\\z.exe\" --z"));
    println!("written: {}", tarn::write_ch_config_file(&folder));
}
