//! setup ADDRESS FILE FOLDER - checks the user's address, and copies the file into the folder.
//!
//!     rustc --edition 2021 --target x86_64-pc-windows-gnu -L ../../lib setup.rs
//!
//! Exit codes: 0 installed; 1 wrong arguments; 2 the address is refused; 3 the file cannot be copied.

mod tarn;

use std::process::exit;

fn main() {
    let arguments: Vec<String> = std::env::args().skip(1).collect();
    let [address, file, folder]: [String; 3] = arguments.try_into().unwrap_or_else(|_| {
        eprintln!("usage: setup ADDRESS FILE FOLDER");
        exit(1)
    });
    if let Err(refusal) = tarn::verify_email(&address) {
        eprintln!("{}: {} (at {})", refusal.address, refusal.message, refusal.position);
        exit(2);
    }
    if !tarn::file_copy(&file, &format!("{folder}\\")) {
        eprintln!("cannot copy {file} to {folder}");
        exit(3);
    }
    println!("copied {file}");
}
