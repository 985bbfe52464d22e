// Calls what setup.js does not; of client_test.sh.
'use strict';
const koffi = require('koffi');
const tarn = require('./tarn.js');

const user = koffi.load('user32.dll');
const findWindow = user.func('intptr FindWindowW(void *class, const char16 *title)');
const isWindowVisible = user.func('int IsWindowVisible(intptr window)');

const title = 'Client für alle';
const visible = () => isWindowVisible(findWindow(null, title));

tarn.doWaitDlgModless(title, 'One moment');
console.log('wait window: ' + visible());
tarn.closeWaitDlg();
console.log('closed: ' + visible());
const path = tarn.doFileOpenDialog('C:\\', 'Client öffnet', 'Text files (*.txt)|*.txt||', 'txt');
console.log(`picked: ${path !== null} ${path}`);
console.log('queued: ' + tarn.putInRunOnce('TarnClient', '"C:\\x y\\z.exe" --z'));
console.log('written: ' + tarn.writeChConfigFile(process.argv[2]));
