// node setup.js ADDRESS FILE FOLDER - checks the user's address, and copies the file into the folder.
//
//     npm install
//     copy ..\..\bin\tarn.dll .
//
// Exit codes: 0 installed; 1 wrong arguments; 2 the address is refused; 3 the file cannot be copied.
'use strict';
const tarn = require('./tarn.js');

function main(args) {
    if (args.length !== 3) {
        console.error('usage: setup ADDRESS FILE FOLDER');
        return 1;
    }
    const [given, file, folder] = args;
    const { accepted, address, message, position } = tarn.verifyEmail(given);
    if (!accepted) {
        console.error(`${address}: ${message} (at ${position})`);
        return 2;
    }
    if (!tarn.fileCopy(file, folder + '\\')) {
        console.error(`cannot copy ${file} to ${folder}`);
        return 3;
    }
    console.log(`copied ${file}`);
    return 0;
}

process.exitCode = main(process.argv.slice(2));
