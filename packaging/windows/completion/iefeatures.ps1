# Completion for iefeatures in PowerShell: commands and options, as the program itself names them. To be read by a line
# of $PROFILE:
#
#   . "$env:LOCALAPPDATA\Import_Export_Features\completion\iefeatures.ps1"

Register-ArgumentCompleter -Native -CommandName 'iefeatures', 'iefeatures.exe' -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)

    $commands = @()
    foreach ($element in $commandAst.CommandElements | Select-Object -Skip 1) {
        $word = $element.Extent.Text
        if ($element.Extent.EndOffset -ge $cursorPosition -or $word -like '-*') { break }
        $commands += $word
        if ($commands[0] -ne 'line' -or $commands.Count -ge 2) { break }
    }
    $help = & $commandAst.GetCommandName() @commands --help 2>$null

    if ($wordToComplete -like '-*') {
        $found = $help | Select-String -Pattern '(?<=^|[ ,])--[a-z][a-z-]*' -AllMatches | ForEach-Object { $_.Matches.Value }
    }
    else {
        $found = @()
        $isInside = $false
        foreach ($line in $help) {
            if ($line -eq 'Subcommands:') { $isInside = $true }
            elseif ($line -eq '') { $isInside = $false }
            elseif ($isInside -and $line -match '^  ([a-z]+) ') { $found += $Matches[1] }
        }
    }
    $found | Sort-Object -Unique | Where-Object { $_ -like "$wordToComplete*" } | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)
    }
}
