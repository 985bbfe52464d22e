// setup ADDRESS FILE FOLDER - checks the user's address, and copies the file into the folder.
//
//	GOOS=windows GOARCH=amd64 go build
//
// Exit codes: 0 installed; 1 wrong arguments; 2 the address is refused; 3 the file cannot be copied.
package main

import (
	"fmt"
	"os"
)

func main() {
	if len(os.Args) != 4 {
		fmt.Fprintln(os.Stderr, "usage: setup ADDRESS FILE FOLDER")
		os.Exit(1)
	}
	if accepted, trimmed, message, position := VerifyEmail(os.Args[1]); !accepted {
		fmt.Fprintf(os.Stderr, "%s: %s (at %d)\n", trimmed, message, position)
		os.Exit(2)
	}
	if !FileCopy(os.Args[2], os.Args[3]+`\`) {
		fmt.Fprintf(os.Stderr, "cannot copy %s to %s\n", os.Args[2], os.Args[3])
		os.Exit(3)
	}
	fmt.Printf("copied %s\n", os.Args[2])
}
