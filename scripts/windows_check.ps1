# Checks TavoResample on Windows: registers the module, scales a generated clip in every pixel format
# with the registered filter, compares the results with known checksums, and unregisters the module.
#
#   powershell -ExecutionPolicy Bypass -File windows_check.ps1 [-Binaries FOLDER]
#
# FOLDER holds TavoResample.ax and vantrel.exe, both of 32 or both of 64 bits; by default it is the
# one of this script. Needs an administrator's prompt, and a system on which the filter is not
# registered yet. Exit code 0: all is as expected.

param([string]$Binaries = $PSScriptRoot)

$ErrorActionPreference = 'Stop'

$width = 64
$height = 48
$frames = 5

# Bits per pixel, and SHA-256 of what vantrel writes by "Nearest Neighbor" and by "Bi-Linear". These
# methods give the same bytes on every processor.
$formats = @(
    @{ Name = 'YV12'; Bits = 12
       nearest = '8cd940f7f1347ccc0109c0b50d22b3f3e9da3665ae40793ca47e83329f0b973b'
       bilinear = 'c9fec70f69cb75dc81cd07909c2a8f981a62b8bc4923c09800a0e26848f2b7b2' }
    @{ Name = 'IYUV'; Bits = 12
       nearest = '3f369d1ccb4e1b082dd6b7d3db037358ad0105d90695ef823416c71625faa255'
       bilinear = '8322cf956f7d9e61f007130aa4ee1d919320bb6e111b66b220f0a3ff097f48f8' }
    @{ Name = 'I420'; Bits = 12
       nearest = '3f369d1ccb4e1b082dd6b7d3db037358ad0105d90695ef823416c71625faa255'
       bilinear = '8322cf956f7d9e61f007130aa4ee1d919320bb6e111b66b220f0a3ff097f48f8' }
    @{ Name = 'YVU9'; Bits = 9
       nearest = '66db0486d25f849505bdebaaedce97326bac3bb43d23a9b1225a1813f858dddb'
       bilinear = '7407b480db6c3875d1d91582cd20974ecd14a1b911b75c1db4ecf4018ba46d13' }
    @{ Name = 'YUY2'; Bits = 16
       nearest = '670d7951621e536a694893f7e32dc972bfe2e80e1a69066c3e67411f70a8d2b1'
       bilinear = '87a16c53ae798a8574292b66145626d26d06d9ddbeb24fc2b88a9e8bfc2319fd' }
    @{ Name = 'YUYV'; Bits = 16
       nearest = '81434737218b3dc271a07f52f98e7408bc0a0cae3927e91fdc0c1d58e09f361d'
       bilinear = 'ad91fda96edfa3794f3eb324a20afaf071ced45e4488ce4fc58fc9a7aaede4ff' }
    @{ Name = 'YVYU'; Bits = 16
       nearest = '0c1343f4849b7eb7b7f0960b8a18e0b6963a4ea4241cc065b05b046c7a920f16'
       bilinear = '29adac2cf5e168d360914e9ca4d38b4f771acdb97e17e23216f61d7f6781da10' }
    @{ Name = 'UYVY'; Bits = 16
       nearest = '59c2e3549c3d32b1145f73c094a3a45cc0986dd144c90891ea2e388c082438e6'
       bilinear = '786ebae2af36368df703f9aab4b720cf72f8394b56a97635d2efeba22f5de6e5' }
    @{ Name = 'RGB24'; Bits = 24
       nearest = '7228062f6503c32b76d3c3665af2133537c403b8553dd9bb4050e2797218930d'
       bilinear = '7e226c96b37fbf0d43a269eae274474c0b88138ed12eadaf909a2964182f3d69' }
    @{ Name = 'RGB555'; Bits = 16
       nearest = '9a9b87c4655b470d0edb6a7a1c067e4484821e7cc438e56bbdf8cc80f96630d1'
       bilinear = 'ab55a3726616783439cd047ad2ef95ebab297c210a557a0fdf839de4141f60db' }
    @{ Name = 'RGB565'; Bits = 16
       nearest = '2682f6bdea9ae68517009f04cb2968903ae84008f949a222dd24c743301abf66'
       bilinear = 'f9f5679cb4d8f3d58d4b657bfaf37989b89b960ee519361af03e0578d8e78c29' }
)

function Get-FourCc([string]$text) {
    [BitConverter]::ToUInt32([Text.Encoding]::ASCII.GetBytes($text), 0)
}

# A chunk of a RIFF file: its code, its length, its bytes. They are all of even length here.
function New-Chunk([string]$code, [byte[]]$content) {
    $stream = New-Object IO.MemoryStream
    $writer = New-Object IO.BinaryWriter $stream
    $writer.Write([Text.Encoding]::ASCII.GetBytes($code))
    $writer.Write([uint32]$content.Length)
    $writer.Write($content)
    , $stream.ToArray()
}

# The bytes of numbers, each as its type says.
function Join-Numbers([object[]]$numbers) {
    $stream = New-Object IO.MemoryStream
    $writer = New-Object IO.BinaryWriter $stream
    foreach ($number in $numbers) { $writer.Write($number) }
    , $stream.ToArray()
}

function Join-Bytes([object[]]$parts) {
    $stream = New-Object IO.MemoryStream
    foreach ($part in $parts) { $stream.Write($part, 0, $part.Length) }
    , $stream.ToArray()
}

function New-Frame([int]$size, [int]$number) {
    $bytes = New-Object byte[] $size
    for ($i = 0; $i -lt $size; $i++) {
        $bytes[$i] = ($i * 7 + ($i -shr 5) * 13 + $number * 29) -band 255
    }
    , $bytes
}

# An uncompressed AVI file.
function New-Clip([string]$name, [int]$bits) {
    $size = [int]($width * $height * $bits / 8)
    $isRgb = $name.StartsWith('RGB')
    $compression = [uint32]0
    if ($name -eq 'RGB565') { $compression = [uint32]3 }
    if (-not $isRgb) { $compression = Get-FourCc $name }
    $handler = if ($isRgb) { [uint32]0 } else { $compression }
    $code = if ($isRgb) { '00db' } else { '00dc' }

    $bitmap = Join-Numbers @([uint32]40, [int32]$width, [int32]$height, [uint16]1, [uint16]$bits,
        $compression, [uint32]$size, [int32]0, [int32]0, [uint32]0, [uint32]0)
    if ($name -eq 'RGB565') {
        $masks = Join-Numbers @([uint32]0xf800, [uint32]0x07e0, [uint32]0x001f)
        $bitmap = Join-Bytes @($bitmap, $masks)
    }
    $main = Join-Numbers @([uint32]40000, [uint32]($size * 25), [uint32]0, [uint32]16,
        [uint32]$frames, [uint32]0, [uint32]1, [uint32]$size, [uint32]$width, [uint32]$height,
        [uint32]0, [uint32]0, [uint32]0, [uint32]0)
    $stream = Join-Bytes @([Text.Encoding]::ASCII.GetBytes('vids'),
        (Join-Numbers @($handler, [uint32]0, [uint16]0, [uint16]0, [uint32]0, [uint32]1, [uint32]25,
            [uint32]0, [uint32]$frames, [uint32]$size, [uint32]::MaxValue, [uint32]0,
            [uint16]0, [uint16]0, [uint16]$width, [uint16]$height)))

    $ascii = [Text.Encoding]::ASCII
    $streamList = Join-Bytes @($ascii.GetBytes('strl'), (New-Chunk 'strh' $stream),
        (New-Chunk 'strf' $bitmap))
    $headerList = Join-Bytes @($ascii.GetBytes('hdrl'), (New-Chunk 'avih' $main),
        (New-Chunk 'LIST' $streamList))
    $movie = @(, $ascii.GetBytes('movi'))
    $index = @()
    for ($n = 0; $n -lt $frames; $n++) {
        $movie += , (New-Chunk $code (New-Frame $size $n))
        $index += , $ascii.GetBytes($code)
        $index += , (Join-Numbers @([uint32]16, [uint32](4 + $n * ($size + 8)), [uint32]$size))
    }
    $file = Join-Bytes @($ascii.GetBytes('AVI '), (New-Chunk 'LIST' $headerList),
        (New-Chunk 'LIST' (Join-Bytes $movie)), (New-Chunk 'idx1' (Join-Bytes $index)))
    , (New-Chunk 'RIFF' $file)
}

# 32-bit modules of a 64-bit Windows have a regsvr32 of their own.
function Get-Registrar([string]$module) {
    $bytes = [IO.File]::ReadAllBytes($module)
    $machine = [BitConverter]::ToUInt16($bytes, [BitConverter]::ToInt32($bytes, 60) + 4)
    $is32 = $machine -eq 0x14c
    $folder = 'System32'
    if ($is32 -and [Environment]::Is64BitOperatingSystem) { $folder = 'SysWOW64' }
    if (-not $is32 -and -not [Environment]::Is64BitProcess) { $folder = 'Sysnative' }
    Join-Path $env:WINDIR "$folder\regsvr32.exe"
}

function Invoke-Program([string]$program, [string[]]$arguments) {
    $quoted = $arguments | ForEach-Object { '"' + $_ + '"' }
    $process = Start-Process $program -ArgumentList $quoted -Wait -PassThru -NoNewWindow
    $process.ExitCode
}

$module = Join-Path $Binaries 'TavoResample.ax'
$vantrel = Join-Path $Binaries 'vantrel.exe'
foreach ($file in @($module, $vantrel)) {
    if (-not (Test-Path $file)) { throw "$file is missing: name its folder with -Binaries" }
}
$registrar = Get-Registrar $module
$folder = Join-Path ([IO.Path]::GetTempPath()) "tavo-check-$PID"
New-Item -ItemType Directory $folder | Out-Null
$faults = 0

if ((Invoke-Program $registrar @('/s', $module)) -ne 0) {
    throw 'the module cannot be registered: is this an administrator''s prompt?'
}
try {
    foreach ($format in $formats) {
        $clip = Join-Path $folder "$($format.Name).avi"
        [IO.File]::WriteAllBytes($clip, (New-Clip $format.Name $format.Bits))
        foreach ($method in @('nearest', 'bilinear')) {
            $result = Join-Path $folder "$($format.Name)-$method.avi"
            $code = Invoke-Program $vantrel @($clip, $result, '--registered', '--size', '40x36',
                '--method', $method, '--as-is', '--quiet')
            $wanted = $format[$method]
            $found = if ($code -eq 0) { (Get-FileHash $result -Algorithm SHA256).Hash } else { '' }
            if ($found -eq $wanted) {
                Write-Host "ok      $($format.Name) $method"
            } else {
                $faults++
                Write-Host "FAULT   $($format.Name) ${method}: exit code $code, SHA-256 $found"
            }
        }
    }
} finally {
    if ((Invoke-Program $registrar @('/s', '/u', $module)) -ne 0) {
        $faults++
        Write-Host 'FAULT   the module cannot be unregistered'
    }
}
if ($faults -gt 0) {
    Write-Host "$faults faults; the files are in $folder"
    exit 1
}
Remove-Item -Recurse $folder
Write-Host 'All formats are as expected.'
exit 0
