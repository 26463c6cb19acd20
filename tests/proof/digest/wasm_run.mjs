// Runs a program that was compiled for WebAssembly. Usage: wasm_run.mjs PROGRAM [ARGUMENT ...]
import {readFile} from "node:fs/promises";
import {WASI} from "node:wasi";

const wasi = new WASI({version: "preview1", args: process.argv.slice(2)});
const program = await WebAssembly.compile(await readFile(process.argv[2]));
const imports = {wasi_snapshot_preview1: wasi.wasiImport};
process.exitCode = wasi.start(await WebAssembly.instantiate(program, imports));
