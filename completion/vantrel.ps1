# Completion of vantrel for PowerShell: run it in the profile, with a full stop and a blank in front.

Register-ArgumentCompleter -Native -CommandName vantrel, vantrel.exe -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)
    $options = @(
        '--size', '--fit', '--method', '--format', '--type', '--fps', '--start', '--duration',
        '--as-is', '--no-sound', '--output-folder', '--overwrite', '--dry-run', '--json', '--log', '--graph',
        '--publish', '--quiet', '--play', '--pages', '--registered', '--module', '--cpu', '--list',
        '--help', '--version')
    $values = @{
        '--method' = @(
            'auto', 'nearest', 'nearest-auto', 'nearest-mmx', 'nearest-sse', 'bilinear',
            'bilinear-auto', 'bilinear-mmx', 'bilinear-sse')
        '--format' = @(
            'auto', 'yv12', 'iyuv', 'i420', 'yvu9', 'yuy2', 'yuyv', 'yvyu', 'uyvy', 'rgb24',
            'rgb555', 'rgb565')
        '--type' = @('auto', 'mpeg1', 'mpeg2')
    }
    $before = $commandAst.CommandElements |
        Where-Object { $_.Extent.EndOffset -lt $cursorPosition } |
        Select-Object -Last 1
    $choices = $values["$before"]
    if (-not $choices -and $wordToComplete -like '-*') { $choices = $options }
    # Without choices, names of files are offered.
    if (-not $choices) { return }
    $choices | Where-Object { $_ -like "$wordToComplete*" } | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)
    }
}
