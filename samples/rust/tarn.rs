//! The functions of tarn.dll, which lies beside the program.

#![allow(dead_code)] // a program need not use them all

use std::ffi::c_void;
use std::os::raw::{c_char, c_int};
use std::ptr::{null, null_mut};

#[allow(non_snake_case)]
mod library {
    use super::*;

    #[link(name = "tarn")]
    extern "system" {
        pub fn DoWaitDlgModless(parent: *mut c_void, title: *const c_char, message: *const c_char) -> c_int;
        pub fn CloseWaitDlg() -> c_int;
        pub fn DoFileOpenDialog(
            folder: *const c_char,
            title: *const c_char,
            filter: *const c_char,
            extension: *const c_char,
            path: *mut c_char,
        ) -> c_int;
        pub fn FileCopy(source: *const c_char, folder: *const c_char) -> c_int;
        pub fn PutInRunOnce(name: *const c_char, command: *const c_char) -> c_int;
        pub fn VerifyEmail(address: *mut c_char, position: *mut c_int, message: *mut c_char) -> c_int;
        pub fn Write_ch_config_File(folder: *const c_char) -> c_int;
    }

    #[link(name = "kernel32")]
    extern "system" {
        pub fn WideCharToMultiByte(
            page: u32,
            flags: u32,
            wide: *const u16,
            count: c_int,
            text: *mut c_char,
            size: c_int,
            default: *const c_char,
            used: *mut c_int,
        ) -> c_int;
        pub fn MultiByteToWideChar(
            page: u32,
            flags: u32,
            text: *const c_char,
            count: c_int,
            wide: *mut u16,
            size: c_int,
        ) -> c_int;
    }
}

/// The text in the process's ANSI code page, with a zero at its end.
fn ansi(text: &str) -> Vec<c_char> {
    let wide: Vec<u16> = text.encode_utf16().chain(Some(0)).collect();
    let mut bytes = vec![0; 2 * wide.len() + 1];
    let (count, size) = (wide.len() as c_int, bytes.len() as c_int);
    unsafe {
        library::WideCharToMultiByte(0, 0, wide.as_ptr(), count, bytes.as_mut_ptr(), size, null(), null_mut());
    }
    bytes
}

fn from_ansi(text: &[c_char]) -> String {
    let length = text.iter().position(|&byte| byte == 0).unwrap_or(text.len());
    let mut wide = vec![0; length];
    let size = length as c_int;
    unsafe {
        library::MultiByteToWideChar(0, 0, text.as_ptr(), size, wide.as_mut_ptr(), size);
    }
    String::from_utf16_lossy(&wide).trim_end_matches('\0').to_string()
}

/// What is wrong with an address: the address, trimmed; a sentence; and where (-1: nowhere).
pub struct Refusal {
    pub address: String,
    pub message: String,
    pub position: i32,
}

/// The trimmed address, when it is accepted.
pub fn verify_email(address: &str) -> Result<String, Refusal> {
    let mut buffer = ansi(address); // the trimmed address is written over it
    let mut message = [0; 73];
    let mut position = -1;
    let accepted =
        unsafe { library::VerifyEmail(buffer.as_mut_ptr(), &mut position, message.as_mut_ptr()) };
    let address = from_ansi(&buffer);
    if accepted == 1 {
        Ok(address)
    } else {
        Err(Refusal { address, message: from_ansi(&message), position })
    }
}

/// Copies a file under its own name; the folder ends in a backslash.
pub fn file_copy(source: &str, folder: &str) -> bool {
    unsafe { library::FileCopy(ansi(source).as_ptr(), ansi(folder).as_ptr()) == 1 }
}

/// Queues a command line for the user's next log-on.
pub fn put_in_run_once(name: &str, command: &str) -> bool {
    unsafe { library::PutInRunOnce(ansi(name).as_ptr(), ansi(command).as_ptr()) == 1 }
}

/// Writes embedch\config\chrc under the folder.
pub fn write_ch_config_file(folder: &str) -> bool {
    unsafe { library::Write_ch_config_File(ansi(folder).as_ptr()) == 1 }
}

/// Shows the wait window. Windows belong to the thread that shows them.
pub fn do_wait_dlg_modless(parent: *mut c_void, title: &str, message: &str) {
    unsafe {
        library::DoWaitDlgModless(parent, ansi(title).as_ptr(), ansi(message).as_ptr());
    }
}

/// Closes it.
pub fn close_wait_dlg() {
    unsafe {
        library::CloseWaitDlg();
    }
}

/// Lets the user pick a file.
pub fn do_file_open_dialog(folder: &str, title: &str, filter: &str, extension: &str) -> Option<String> {
    let mut path = [0; 260];
    let picked = unsafe {
        library::DoFileOpenDialog(
            ansi(folder).as_ptr(),
            ansi(title).as_ptr(),
            ansi(filter).as_ptr(),
            ansi(extension).as_ptr(),
            path.as_mut_ptr(),
        )
    };
    if picked == 1 {
        Some(from_ansi(&path))
    } else {
        None
    }
}
