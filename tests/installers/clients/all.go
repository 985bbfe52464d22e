// Calls what setup.go does not; of client_test.sh.
package main

import (
	"fmt"
	"os"
	"runtime"
	"syscall"
	"unsafe"
)

const title = "Client für alle"

var (
	user32          = syscall.NewLazyDLL("user32.dll")
	findWindow      = user32.NewProc("FindWindowW")
	isWindowVisible = user32.NewProc("IsWindowVisible")
)

func visible() uintptr {
	name, _ := syscall.UTF16PtrFromString(title)
	window, _, _ := findWindow.Call(0, uintptr(unsafe.Pointer(name)))
	result, _, _ := isWindowVisible.Call(window)
	return result
}

func main() {
	runtime.LockOSThread()
	DoWaitDlgModless(0, title, "One moment")
	fmt.Println("wait window:", visible())
	CloseWaitDlg()
	fmt.Println("closed:", visible())
	path, picked := DoFileOpenDialog(`C:\`, "Client öffnet", "Text files (*.txt)|*.txt||", "txt")
	fmt.Println("picked:", picked, path)
	fmt.Println("queued:", PutInRunOnce("TarnClient", `"C:\x y\z.exe" --z`))
	fmt.Println("written:", WriteChConfigFile(os.Args[1]))
}
