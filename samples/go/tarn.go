// The functions of tarn.dll, which lies beside the program.
package main

import (
	"os"
	"path/filepath"
	"syscall"
	"unsafe"
)

var (
	kernel32            = syscall.NewLazyDLL("kernel32.dll")
	wideCharToMultiByte = kernel32.NewProc("WideCharToMultiByte")
	multiByteToWideChar = kernel32.NewProc("MultiByteToWideChar")

	// By its full path: a bare name would be looked for in other folders, too.
	tarn              = syscall.NewLazyDLL(filepath.Join(programFolder(), "tarn.dll"))
	doWaitDlgModless  = tarn.NewProc("DoWaitDlgModless")
	closeWaitDlg      = tarn.NewProc("CloseWaitDlg")
	doFileOpenDialog  = tarn.NewProc("DoFileOpenDialog")
	fileCopy          = tarn.NewProc("FileCopy")
	putInRunOnce      = tarn.NewProc("PutInRunOnce")
	verifyEmail       = tarn.NewProc("VerifyEmail")
	writeChConfigFile = tarn.NewProc("Write_ch_config_File")
)

func programFolder() string {
	program, err := os.Executable()
	if err != nil {
		panic(err)
	}
	return filepath.Dir(program)
}

// ansi returns the text in the process's ANSI code page, with a zero at its end. A call's pointers are
// made into numbers in the call itself: only so does Go keep what they point to until it returns.
func ansi(text string) *byte {
	wide := syscall.StringToUTF16(text)
	bytes := make([]byte, 2*len(wide)+1)
	wideCharToMultiByte.Call(0, 0, uintptr(unsafe.Pointer(&wide[0])), uintptr(len(wide)),
		uintptr(unsafe.Pointer(&bytes[0])), uintptr(len(bytes)), 0, 0)
	return &bytes[0]
}

func fromAnsi(text *byte) string {
	wide := make([]uint16, 1024)
	multiByteToWideChar.Call(0, 0, uintptr(unsafe.Pointer(text)), ^uintptr(0),
		uintptr(unsafe.Pointer(&wide[0])), uintptr(len(wide)))
	return syscall.UTF16ToString(wide)
}

// VerifyEmail says whether the address is accepted. If not: the trimmed address, what is wrong with
// it, and where (-1: nowhere).
func VerifyEmail(address string) (accepted bool, trimmed, message string, position int32) {
	buffer := ansi(address) // the trimmed address is written over it
	text := make([]byte, 73)
	position = -1
	result, _, _ := verifyEmail.Call(uintptr(unsafe.Pointer(buffer)),
		uintptr(unsafe.Pointer(&position)), uintptr(unsafe.Pointer(&text[0])))
	return int32(result) == 1, fromAnsi(buffer), fromAnsi(&text[0]), position
}

// FileCopy copies a file under its own name; the folder ends in a backslash.
func FileCopy(source, folder string) bool {
	result, _, _ := fileCopy.Call(uintptr(unsafe.Pointer(ansi(source))),
		uintptr(unsafe.Pointer(ansi(folder))))
	return int32(result) == 1
}

// PutInRunOnce queues a command line for the user's next log-on.
func PutInRunOnce(name, command string) bool {
	result, _, _ := putInRunOnce.Call(uintptr(unsafe.Pointer(ansi(name))),
		uintptr(unsafe.Pointer(ansi(command))))
	return int32(result) == 1
}

// WriteChConfigFile writes embedch\config\chrc under the folder.
func WriteChConfigFile(folder string) bool {
	result, _, _ := writeChConfigFile.Call(uintptr(unsafe.Pointer(ansi(folder))))
	return int32(result) == 1
}

// DoWaitDlgModless shows the wait window. Windows belong to the thread that shows them: call
// runtime.LockOSThread before this, CloseWaitDlg and DoFileOpenDialog.
func DoWaitDlgModless(parent uintptr, title, message string) {
	doWaitDlgModless.Call(parent, uintptr(unsafe.Pointer(ansi(title))),
		uintptr(unsafe.Pointer(ansi(message))))
}

// CloseWaitDlg closes it.
func CloseWaitDlg() { closeWaitDlg.Call() }

// DoFileOpenDialog lets the user pick a file.
func DoFileOpenDialog(folder, title, filter, extension string) (path string, picked bool) {
	buffer := make([]byte, 260)
	result, _, _ := doFileOpenDialog.Call(uintptr(unsafe.Pointer(ansi(folder))),
		uintptr(unsafe.Pointer(ansi(title))), uintptr(unsafe.Pointer(ansi(filter))),
		uintptr(unsafe.Pointer(ansi(extension))), uintptr(unsafe.Pointer(&buffer[0])))
	return fromAnsi(&buffer[0]), int32(result) == 1
}
